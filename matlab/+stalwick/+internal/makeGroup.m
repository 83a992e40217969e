function group = makeGroup(members, allowIncomplete)
%MAKEGROUP  Channels that were sampled together, from a cell array of openChannel's files.
[~, order] = sort(cellfun(@(file) file.index, members));
members = members(order);
group.shortChannels = {};
records = cellfun(@(file) file.numRecords, members);
if ~allowIncomplete
    whole = splitShort(members, records);
    group.shortChannels = cellfun(@(file) file.name, members(~whole), 'UniformOutput', false)';
    members = members(whole);
    records = records(whole);
end
checkAlike(members);
layout = stalwick.internal.channelLayout(members{1});
layout.counts = layout.counts(1:min(records));
layout.times = layout.times(1:min(records));
layout.starts = layout.starts(1:min(records) + 1);
checkEnds(members, layout);
group.channels = cellfun(@(file) file.name, members, 'UniformOutput', false)';
group.samplingFrequency = layout.rate;
group.numSamples = layout.starts(end);
group.gaps = stalwick.internal.findGaps(layout);
group.traces = @(channels, first, last) readTraces(members, layout, channels, first, last);
group.times = @(first, last) readTimes(members, layout, first, last);
end

function whole = splitShort(members, records)
% Packets that describe 32, 64 or 128 channels have no samples of the channels after these.
whole = true(size(records));
for k = 2:numel(members)
    border = strncmp(members{k}.name, 'CSC', 3) && any(members{k}.index == [32 64 128]);
    if records(k) > records(k - 1) || (records(k) < records(k - 1) && ~border)
        error('stalwick:inconsistent', ['%s: %d records; %s has %d; one is cut or not of this ' ...
            'set; convert again'], members{k}.path, records(k), members{k - 1}.name, ...
            records(k - 1));
    end
    whole(k) = records(k) == records(1);
end
if ~all(whole)
    warning('stalwick:short', ['%s and those after it have fewer samples than the other ' ...
        'channels: packets did not carry them; read each with stalwick.readVcs'], ...
        members{find(~whole, 1)}.name);
end
end

function checkAlike(members)
for k = 2:numel(members)
    if members{k}.rate ~= members{1}.rate
        error('stalwick:inconsistent', '%s: %d samples a second; %s has %d', ...
            members{k}.path, members{k}.rate, members{1}.name, members{1}.rate);
    end
    if members{k}.header.ADMaxValue ~= members{1}.header.ADMaxValue
        error('stalwick:inconsistent', '%s: its -ADMaxValue is not that of %s', ...
            members{k}.path, members{1}.name);
    end
end
end

function checkEnds(members, layout)
% The last record of each channel shows whether it ends like the others.
if layout.starts(end) > 0
    for k = 2:numel(members)
        stalwick.internal.readSamples(members{k}, layout, layout.starts(end), layout.starts(end));
    end
end
end

function traces = readTraces(members, layout, channels, first, last)
chosen = choose(members, channels);
[first, last] = stalwick.internal.checkRange([first last], layout.starts(end), members{1}.path);
traces = zeros(last - first + 1, numel(chosen), 'int16');
for k = 1:numel(chosen)
    traces(:, k) = stalwick.internal.readSamples(members{chosen(k)}, layout, first, last);
end
end

function times = readTimes(members, layout, first, last)
[first, last] = stalwick.internal.checkRange([first last], layout.starts(end), members{1}.path);
times = stalwick.internal.sampleTimes(layout, first, last);
end

function chosen = choose(members, channels)
names = cellfun(@(file) file.name, members, 'UniformOutput', false);
if isempty(channels)
    chosen = 1:numel(members);
elseif isnumeric(channels)
    chosen = channels(:)';
    if any(chosen < 1 | chosen > numel(members))
        error('stalwick:channel', 'channels are 1 to %d', numel(members));
    end
else
    channels = cellstr(channels);
    [known, chosen] = ismember(channels, names);
    if ~all(known)
        error('stalwick:channel', 'there is no channel %s', channels{find(~known, 1)});
    end
end
end

% SPDX-License-Identifier: BSD-3-Clause
