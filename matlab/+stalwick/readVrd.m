function file = readVrd(path, varargin)
%READVRD  Samples of a raw data file (.vrd).
%
%   file = stalwick.readVrd(path)
%   file = stalwick.readVrd(path, 'Range', [first last])     samples first to last, from 1
%   file = stalwick.readVrd(path, 'AllowIncomplete', true)   also a file that was not closed
%
%   file.values             int32, values(sample, channel)
%   file.microvoltsPerStep  double(file.values) * this are microvolts
%   file.times              int64 column, microseconds
%   file.ttl                uint8 column, the TTL value at each sample
%   file.numSamples         in the whole file
%   file.samplingFrequency  samples per second
%   file.header             the header fields
%
%   Every record that is read is checked, including its checksum; a wrong one is an error that
%   names file, record and byte, which count from 0. Files with records of different lengths, from
%   recordings whose packets describe different numbers of channels, are refused: Python reads them.
options = stalwick.internal.options(varargin);
file = stalwick.internal.openFile(path, 'Raw', options.allowIncomplete);
channels = valuesInRecord(file, options.allowIncomplete);
wordsInRecord = channels + 18;
file.numSamples = floor(file.size / (4 * wordsInRecord));
[first, last] = stalwick.internal.checkRange(options.range, file.numSamples, path);
words = stalwick.internal.readWords(file, wordsInRecord, 'uint32', first, last);
checkRecords(file, words, first);
times = uint32(words([5 4], :));
file.times = reshape(typecast(times(:), 'int64'), [], 1);
file.ttl = uint8(words(7, :)');
file.values = reshape(typecast(reshape(words(18:end - 1, :), [], 1), 'int32'), channels, [])';
file.samplingFrequency = file.header.SamplingFrequency;
file.microvoltsPerStep = 0.015625;
end

function channels = valuesInRecord(file, allowIncomplete)
% From the header, unless the packets describe another number: the first or last record shows which.
channels = file.header.NumADChannels;
if file.size == 0
    return
end
for candidate = [channels, 32, 64, 128, 256]
    wordsInRecord = candidate + 18;
    count = floor(file.size / (4 * wordsInRecord));
    if count > 0 && (allowIncomplete || count * 4 * wordsInRecord == file.size)
        words = stalwick.internal.readWords(file, wordsInRecord, 'uint32', [1 count]);
        if any(words(1, :) == 2048 & checksum(words) == 0)
            channels = candidate;
            return
        end
    end
end
error('stalwick:incomplete', ['%s: it does not hold a whole number of records of one length; ' ...
    'convert the recording again'], file.path);
end

function result = checksum(words)
result = words(1, :);
for k = 2:size(words, 1)
    result = bitxor(result, words(k, :));
end
end

function checkRecords(file, words, first)
checks = {
    words(1, :) ~= 2048, 0, 'the start marker is not 2048'
    words(2, :) ~= 1, 4, 'the record identifier is not 1'
    words(3, :) ~= file.header.NumADChannels + 10, 8, 'the size word is wrong'
    words(6, :) ~= 0, 20, 'the status is not 0'
    words(7, :) > 255, 24, 'the TTL value is not 0 to 255'
    any(words(8:17, :) ~= 0, 1), 28, 'reserved words are not zero'
    checksum(words) ~= 0, 0, 'the checksum is wrong'};
for k = 1:size(checks, 1)
    wrong = find(checks{k, 1}, 1);
    if ~isempty(wrong)
        stalwick.internal.damaged(file.path, first + wrong - 2, 4 * size(words, 1), ...
            checks{k, 2}, checks{k, 3});
    end
end
end

% SPDX-License-Identifier: BSD-3-Clause
