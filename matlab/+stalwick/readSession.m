function session = readSession(directory, varargin)
%READSESSION  Everything that was converted from one recording.
%
%   session = stalwick.readSession(directory)
%   session = stalwick.readSession(directory, 'AllowIncomplete', true)
%   session = stalwick.readSession(directory, 'Suffix', '_01')   outputs of a further conversion
%
%   session.channels           names of the A/D channels, {'CSC1', 'CSC2', ...}
%   session.samplingFrequency  samples per second
%   session.numSamples         of each A/D channel
%   session.traces(channels, first, last)
%                              int16, (sample, channel); channels are names or positions, [] for all;
%                              samples first to last, from 1. Read from the files when called
%   session.times(first, last) int64 column, microseconds
%   session.gaps               where the records' times step (see stalwick.readVcs)
%   session.events             as from stalwick.readVev; [] without an event file
%   session.Base, session.AFE, session.Ultrasonic
%                              groups with channels, samplingFrequency, numSamples, traces, times;
%                              [] if there are none
%   session.rawPath            for stalwick.readVrd; '' without a raw data file
%   session.shortChannels      A/D channels that some packets lack: read them with readVcs
%   session.headers            the header fields of every file, by its name
%
%   Damaged files, files of different recordings and files that do not match cause errors.
options = stalwick.internal.options(varargin);
files = openAll(directory, options);
names = fieldnames(files);
session = struct('directory', directory, 'events', [], 'rawPath', '');
for k = 1:numel(names)
    session.headers.(names{k}) = files.(names{k}).header;
end
if isfield(files, 'Events')
    session.events = stalwick.readVev(files.Events.path, varargin{:});
end
if isfield(files, 'RawData')
    session.rawPath = files.RawData.path;
end
for group = {'Base', 'AFE', 'Ultrasonic'}
    session.(group{1}) = [];
    wanted = names(strncmp(names, group{1}, numel(group{1})));
    if ~isempty(wanted)
        members = cellfun(@(name) files.(name), wanted, 'UniformOutput', false);
        session.(group{1}) = stalwick.internal.makeGroup(members, options.allowIncomplete);
    end
end
session = addAdChannels(session, files, options);
end

function session = addAdChannels(session, files, options)
names = fieldnames(files);
names = names(strncmp(names, 'CSC', 3));
session.channels = {};
session.shortChannels = {};
session.numSamples = 0;
if isempty(names)
    return
end
members = cellfun(@(name) files.(name), names, 'UniformOutput', false);
group = stalwick.internal.makeGroup(members, options.allowIncomplete);
for field = fieldnames(group)'
    session.(field{1}) = group.(field{1});
end
if isfield(files, 'RawData') && ~options.allowIncomplete
    raw = stalwick.readVrd(files.RawData.path, 'Range', [1 0]);
    if raw.numSamples ~= session.numSamples
        error('stalwick:inconsistent', ['%s: %d records; the channel files have %d samples; ' ...
            'one is cut or not of this set; convert again'], ...
            raw.path, raw.numSamples, session.numSamples);
    end
end
end

function files = openAll(directory, options)
% Every file by its entity, CSC1, ...; those of other conversions are left out.
found = dir(directory);
files = struct();
first = [];
for k = 1:numel(found)
    parts = regexp(found(k).name, '^(.+?)(_\d\d+)?\.(vcs|vev|vrd)$', 'tokens', 'once');
    if isempty(parts)
        continue
    end
    if numel(parts) < 3
        parts = [parts(1), {''}, parts(end)];
    end
    if ~strcmp(parts{2}, options.suffix)
        continue
    end
    file = openOne(fullfile(directory, found(k).name), parts, options.allowIncomplete);
    if isempty(first)
        first = file;
    end
    checkSame(file, first);
    files.(parts{1}) = file;
end
if isempty(first)
    error('stalwick:none', '%s: there are no outputs (.vcs, .vev, .vrd) in it', directory);
end
end

function file = openOne(path, parts, allowIncomplete)
switch parts{3}
    case 'vcs'
        file = stalwick.internal.openChannel(path, allowIncomplete);
    case 'vev'
        file = stalwick.internal.openFile(path, 'Event', allowIncomplete);
    otherwise
        file = stalwick.internal.openFile(path, 'Raw', allowIncomplete);
end
if ~strcmp(file.header.AcqEntName, parts{1})
    error('stalwick:inconsistent', '%s: its header says that it is %s; rename it', ...
        path, file.header.AcqEntName);
end
end

function checkSame(file, first)
for key = {'SessionUUID', 'AcquisitionSystem', 'ApplicationName'}
    if ~strcmp(file.header.(key{1}), first.header.(key{1}))
        error('stalwick:inconsistent', ['%s: its -%s is not that of %s; ' ...
            'they were not made from one recording'], file.path, key{1}, first.path);
    end
end
end

% SPDX-License-Identifier: BSD-3-Clause
