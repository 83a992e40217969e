function file = openFile(path, type, allowIncomplete)
%OPENFILE  Header and size of an output; type is CSC, Event or Raw.
%
%   file.path, file.header, file.size: bytes after the header block, only whole records
%   if the type has records of one length.
id = fopen(path, 'r', 'ieee-le');
if id < 0
    error('stalwick:open', '%s: cannot open it', path);
end
close = onCleanup(@() fclose(id));
block = fread(id, 16384, 'uint8=>uint8');
fseek(id, 0, 'eof');
file.path = path;
file.header = stalwick.internal.parseHeader(block, path, type);
file.size = ftell(id) - 16384;
if ~strcmp(type, 'Event') && isempty(file.header.TimeClosed) && ~allowIncomplete
    incomplete(path, ['its header says that it was not closed, so it may lack its end, ' ...
        'or a conversion is still writing it']);
end
recordSize = struct('CSC', 1044, 'Event', 184, 'Raw', 4);
left = mod(file.size, recordSize.(type));
if left && ~allowIncomplete
    record = (file.size - left) / recordSize.(type);
    incomplete(path, sprintf('it ends %d bytes after the beginning of record %d', left, record));
end
file.size = file.size - left;
end

function incomplete(path, reason)
error('stalwick:incomplete', ['%s: %s; convert the recording again, or read the whole records ' ...
    'that are there with ''AllowIncomplete'', true'], path, reason);
end

% SPDX-License-Identifier: BSD-3-Clause
