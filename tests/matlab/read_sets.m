% read_sets(listFile): reads every directory that the file lists and writes what was found to
% DIRECTORY.found, or the error to DIRECTORY.error. The test compares the bytes.
function read_sets(listFile)
directories = strsplit(strtrim(fileread(listFile)), char(10));
for k = 1:numel(directories)
    try
        [options, directory] = strtok(directories{k}, ' ');
        directory = directory(2:end);
        bytes = read_one(directory, strcmp(options, 'incomplete'));
        write_all([directory '.found'], bytes);
    catch problem
        write_all([directory '.error'], uint8(problem.message));
        if ~strncmp(problem.identifier, 'stalwick:', 9)
            write_all([directory '.fault'], uint8([problem.identifier ' ' problem.message]));
        end
    end
end
end

function bytes = read_one(directory, allowIncomplete)
session = stalwick.readSession(directory, 'AllowIncomplete', allowIncomplete);
parts = {};
groups = {session, session.Base, session.AFE, session.Ultrasonic};
for k = 1:numel(groups)
    group = groups{k};
    if isempty(group) || isempty(group.channels)
        continue
    end
    traces = group.traces([], 1, group.numSamples);
    times = typecast(group.times(1, group.numSamples), 'uint8');
    for channel = 1:size(traces, 2)
        parts{end + 1} = typecast(traces(:, channel), 'uint8');
        parts{end + 1} = times;
    end
end
for k = 1:numel(session.shortChannels)
    file = stalwick.readVcs(fullfile(directory, [session.shortChannels{k} '.vcs']));
    parts(end + 1:end + 2) = {typecast(file.samples, 'uint8'), typecast(file.times, 'uint8')};
end
parts(end + 1:end + 2) = {typecast(session.events.times, 'uint8'), session.events.ttl};
if ~isempty(session.rawPath)
    raw = stalwick.readVrd(session.rawPath, 'AllowIncomplete', allowIncomplete);
    values = raw.values';
    parts(end + 1:end + 3) = {typecast(raw.times, 'uint8'), raw.ttl, typecast(values(:), 'uint8')};
end
parts = cellfun(@(part) reshape(part, [], 1), parts, 'UniformOutput', false);
bytes = vertcat(parts{:});
end

function write_all(path, bytes)
id = fopen(path, 'w');
fwrite(id, bytes, 'uint8');
fclose(id);
end

% SPDX-License-Identifier: BSD-3-Clause
