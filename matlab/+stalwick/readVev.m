function file = readVev(path, varargin)
%READVEV  The TTL events of an event file (.vev).
%
%   file = stalwick.readVev(path)
%   file = stalwick.readVev(path, 'AllowIncomplete', true)   without a truncated record
%
%   file.times    int64 column, microseconds
%   file.ttl      uint8 column: the new value of all lines; line 0 is the lowest bit
%   file.changed, file.rising, file.falling
%                 uint8 columns: the lines that changed, went high, went low, one bit per line. They
%                 are 0 for the first event: the file does not contain the value before it.
%   file.header   the header fields
%
%   The header of an event file always says that it was not closed, and a missing end cannot be
%   detected.
%
%   A file that violates the format is an error that names file, record and byte; records
%   and bytes count from 0.
options = stalwick.internal.options(varargin);
file = stalwick.internal.openFile(path, 'Event', options.allowIncomplete);
words = stalwick.internal.readWords(file, 92, 'uint16', 1, file.size);
checkRecords(path, words);
count = size(words, 2);
file.times = reshape(typecast(reshape(words(4:7, :), [], 1), 'int64'), [], 1);
file.ttl = uint8(words(9, :)');
before = [file.ttl(1:min(count, 1)); file.ttl(1:end - 1)];
file.changed = bitxor(file.ttl, before);
file.rising = bitand(file.ttl, file.changed);
file.falling = bitand(before, file.changed);
end

function checkRecords(path, words)
text = zeros(128, 1, 'uint8');
text(1:11) = uint8('TTL Change.');
text = typecast(text, 'uint16');
same = [false, words(9, 2:end) == words(9, 1:end - 1)];
same = same(1:size(words, 2));
checks = {
    any(words(1:3, :) ~= 0, 1), 0, 'reserved bytes are not zero'
    words(8, :) ~= 21, 14, 'eventId is not 21, a TTL change'
    words(9, :) > 255, 16, 'ttlValue is not 0 to 255'
    same, 16, 'ttlValue is that of the event before, which is no change'
    any(words(10:28, :) ~= 0, 1), 18, 'reserved bytes are not zero'
    any(words(29:92, :) ~= repmat(text, 1, size(words, 2)), 1), 56, ...
        'eventString is not that of a TTL change'};
for k = 1:size(checks, 1)
    wrong = find(checks{k, 1}, 1);
    if ~isempty(wrong)
        stalwick.internal.damaged(path, wrong - 1, 184, checks{k, 2}, checks{k, 3});
    end
end
end

% SPDX-License-Identifier: BSD-3-Clause
