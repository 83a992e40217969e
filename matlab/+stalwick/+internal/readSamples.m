function samples = readSamples(file, layout, first, last)
%READSAMPLES  Samples first to last, from 1, as an int16 column.
%
%   The layout may be that of another channel of the group: a record whose time or number of
%   samples differs from the layout is an error.
if last < first
    samples = zeros(0, 1, 'int16');
    return
end
a = find(layout.starts < first, 1, 'last');
b = find(layout.starts < last, 1, 'last');
words = stalwick.internal.readWords(file, 522, 'uint16', a, b);
if size(words, 2) < b - a + 1
    stalwick.internal.damaged(file.path, file.numRecords, 1044, 0, ...
        'the file ends before the others of its group');
end
heads = stalwick.internal.recordHeads(file, words, a - 1);
refuseOther(file, heads.times ~= layout.times(a:b), a, 0, 'timestamp');
refuseOther(file, heads.counts ~= layout.counts(a:b), a, 16, 'numValidSamples');
used = repmat((1:512)', 1, b - a + 1) <= repmat(heads.counts', 512, 1);
values = words(11:522, :);
wrong = find(any(values ~= 0 & ~used, 1), 1);
if ~isempty(wrong)
    stalwick.internal.damaged(file.path, a + wrong - 2, 1044, 20, ...
        'there are values after the last valid sample');
end
samples = typecast(values(used), 'int16');
skipped = first - 1 - layout.starts(a);
samples = reshape(samples(skipped + 1:skipped + last - first + 1), [], 1);
end

function refuseOther(file, different, a, offset, what)
wrong = find(different, 1);
if ~isempty(wrong)
    stalwick.internal.damaged(file.path, a + wrong - 2, 1044, offset, ...
        [what ' is not that of the other channels']);
end
end

% SPDX-License-Identifier: BSD-3-Clause
