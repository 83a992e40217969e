function gaps = findGaps(layout)
%FINDGAPS  Steps of time between records that differ from the length of the first.
%
%   The gap is in the record with samples startSample to endSample, from 1. Record times can lag
%   by up to nine sample periods, and a lost packet is ten: in between is the limit.
steps = double(diff(layout.times)) * (layout.rate / 1e6) - layout.counts(1:end - 1);
found = find(abs(steps) > 9.5);
gaps = struct('startSample', num2cell(layout.starts(found) + 1), ...
    'endSample', num2cell(layout.starts(found + 1)), ...
    'missingSamples', num2cell(round(steps(found))));
end

% SPDX-License-Identifier: BSD-3-Clause
