function [first, last] = checkRange(range, count, path)
%CHECKRANGE  The requested samples, from 1; [n + 1, n] is an empty range.
if isempty(range)
    range = [1 count];
end
first = double(range(1));
last = double(range(2));
if first < 1 || last > count || last < first - 1
    error('stalwick:range', '%s: samples %d to %d were asked for; there are 1 to %d', ...
        path, first, last, count);
end
end

% SPDX-License-Identifier: BSD-3-Clause
