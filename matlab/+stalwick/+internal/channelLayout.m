function layout = channelLayout(file)
%CHANNELLAYOUT  Which samples are in which record of a channel file, and when.
%
%   layout.times (int64), layout.counts, layout.starts: samples before each record, and of all;
%   layout.rate
words = allHeads(file);
heads = stalwick.internal.recordHeads(file, words, 0);
layout.times = heads.times;
layout.counts = heads.counts;
layout.starts = [0; cumsum(heads.counts)];
layout.rate = file.rate;
end

function words = allHeads(file)
% Only the ten words before each record's samples.
if file.numRecords == 0
    words = zeros(10, 0, 'uint16');
    return
end
id = fopen(file.path, 'r', 'ieee-le');
if id < 0
    error('stalwick:open', '%s: cannot open it', file.path);
end
close = onCleanup(@() fclose(id));
fseek(id, 16384, 'bof');
words = fread(id, [10, file.numRecords], '10*uint16=>uint16', 1024);
end

% SPDX-License-Identifier: BSD-3-Clause
