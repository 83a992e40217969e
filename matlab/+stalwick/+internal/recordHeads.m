function heads = recordHeads(file, words, first)
%RECORDHEADS  Times (int64) and sample counts of records words(word, record), checked.
%
%   first is the number of the first of them, from 0.
channels = typecast(reshape(words(5:6, :), [], 1), 'uint32');
rates = typecast(reshape(words(7:8, :), [], 1), 'uint32');
counts = double(typecast(reshape(words(9:10, :), [], 1), 'uint32'));
checks = {
    channels ~= file.index, 8, 'channelNumber is not the header''s'
    rates ~= file.rate, 12, 'sampleFrequency is not the header''s'
    counts < 1 | counts > 512, 16, 'numValidSamples is not 1 to 512'};
for k = 1:size(checks, 1)
    wrong = find(checks{k, 1}, 1);
    if ~isempty(wrong)
        stalwick.internal.damaged(file.path, first + wrong - 1, 1044, checks{k, 2}, checks{k, 3});
    end
end
heads.times = reshape(typecast(reshape(words(1:4, :), [], 1), 'int64'), [], 1);
heads.counts = counts(:);
end

% SPDX-License-Identifier: BSD-3-Clause
