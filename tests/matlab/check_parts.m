% check_parts(directory): parts of files, fields, options and usage, each an assertion.
function check_parts(directory)
path = fullfile(directory, 'CSC2.vcs');
whole = stalwick.readVcs(path);
part = stalwick.readVcs(path, 'Range', [510 1030]);
assert(isequal(part.samples, whole.samples(510:1030)));
assert(isequal(part.times, whole.times(510:1030)));
assert(isa(part.samples, 'int16') && isa(part.times, 'int64'));
assert(part.numSamples == 1100 && whole.samplingFrequency == 30000);
assert(strcmp(whole.header.AcqEntName, 'CSC2') && whole.microvoltsPerStep == 4);
assert(isempty(whole.gaps) && strcmp(whole.name, 'CSC2'));
assert(isequal(fieldnames(whole.gaps)', {'startSample', 'endSample', 'missingSamples'}));
empty = stalwick.readVcs(path, 'Range', [1 0]);
assert(isempty(empty.samples) && isempty(empty.times));

session = stalwick.readSession(directory);
assert(isequal(session.channels, {'CSC1', 'CSC2', 'CSC3'}));
both = session.traces({'CSC3', 'CSC2'}, 500, 600);
assert(isequal(both(:, 2), whole.samples(500:600)));
assert(isequal(session.traces(2, 1, 3), whole.samples(1:3)));
assert(isequal(session.times(510, 520), whole.times(510:520)));
assert(isequal(session.Base.channels, {'Base_LAX', 'Base_LAY'}) && isempty(session.AFE));
assert(session.Ultrasonic.samplingFrequency == 210000);
assert(strcmp(session.headers.RawData.FileType, 'Raw'));

events = session.events;
assert(isequal(events.ttl(1:4)', uint8([1 2 0 1])));
assert(isequal(events.rising(1:4)', uint8([0 2 0 1])));
assert(isequal(events.falling(1:4)', uint8([0 1 2 0])));

raw = stalwick.readVrd(session.rawPath);
few = stalwick.readVrd(session.rawPath, 'Range', [20 29]);
assert(isequal(few.values, raw.values(20:29, :)) && raw.microvoltsPerStep == 0.015625);

refused('stalwick:range', @() stalwick.readVcs(path, 'Range', [0 5]));
refused('stalwick:range', @() stalwick.readVcs(path, 'Range', [1 1101]));
refused('stalwick:range', @() session.traces([], 1000, 1101));
refused('stalwick:channel', @() session.traces({'CSC4'}, 1, 2));
refused('stalwick:channel', @() session.traces(4, 1, 2));
refused('stalwick:usage', @() stalwick.readVcs(path, 'Rang', [1 2]));
refused('stalwick:open', @() stalwick.readVcs(fullfile(directory, 'CSC9.vcs')));
refused('stalwick:none', @() stalwick.readSession(directory, 'Suffix', '_01'));
end

function refused(identifier, action)
try
    action();
catch problem
    assert(strcmp(problem.identifier, identifier), problem.message);
    return
end
error('check:refused', 'nothing was refused: %s', func2str(action));
end

% SPDX-License-Identifier: BSD-3-Clause
