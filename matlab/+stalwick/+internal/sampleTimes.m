function times = sampleTimes(layout, first, last)
%SAMPLETIMES  Microseconds of samples first to last, from 1: the record's time and one sample
%   period per sample, truncated.
if last < first
    times = zeros(0, 1, 'int64');
    return
end
a = find(layout.starts < first, 1, 'last');
b = find(layout.starts < last, 1, 'last');
within = int64(floor((0:511)' * 1e6 / layout.rate));
counts = layout.counts(a:b)';
used = repmat((1:512)', 1, b - a + 1) <= repmat(counts, 512, 1);
all = repmat(layout.times(a:b)', 512, 1) + repmat(within, 1, b - a + 1);
all = all(used);
skipped = first - 1 - layout.starts(a);
times = reshape(all(skipped + 1:skipped + last - first + 1), [], 1);
end

% SPDX-License-Identifier: BSD-3-Clause
