function damaged(path, record, recordSize, offset, reason)
%DAMAGED  The error for a record; record and byte count from 0.
byte = 16384 + record * recordSize + offset;
error('stalwick:damaged', '%s: record %d (byte %d): %s; convert the recording again', ...
    path, record, byte, reason);
end

% SPDX-License-Identifier: BSD-3-Clause
