function file = openChannel(path, allowIncomplete)
%OPENCHANNEL  A channel file: openFile, name, index, number of records, rate.
file = stalwick.internal.openFile(path, 'CSC', allowIncomplete);
file.name = file.header.AcqEntName;
file.index = file.header.ADChannel;
file.numRecords = file.size / 1044;
file.rate = round(file.header.SamplingFrequency);
if file.numRecords > 0
    % The records have the whole number; the header prints six digits of it.
    first = stalwick.internal.readWords(file, 522, 'uint16', 1, 1);
    file.rate = double(typecast(first(7:8), 'uint32'));
    if file.rate == 0 || str2double(sprintf('%g', file.rate)) ~= file.header.SamplingFrequency
        stalwick.internal.damaged(path, 0, 1044, 12, 'sampleFrequency is not the header''s');
    end
end
end

% SPDX-License-Identifier: BSD-3-Clause
