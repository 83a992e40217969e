function words = readWords(file, wordsInRecord, type, first, last)
%READWORDS  Records first to last, from 1, as words(word, record).
%
%   readWords(file, n, type, [a b ...]) reads these records one by one. `last` may be beyond the
%   end. Mapped into memory if memmapfile exists, otherwise read.
bytesInWord = 2 + 2 * strcmp(type, 'uint32');
count = floor(file.size / (bytesInWord * wordsInRecord));
if nargin < 5
    words = zeros(wordsInRecord, numel(first), type);
    for k = 1:numel(first)
        words(:, k) = stalwick.internal.readWords(file, wordsInRecord, type, first(k), first(k));
    end
    return
end
last = min(last, count);
if last < first
    words = zeros(wordsInRecord, 0, type);
elseif exist('memmapfile', 'file') || exist('memmapfile', 'class')
    map = memmapfile(file.path, 'Offset', 16384, 'Format', {type, [wordsInRecord count], 'all'}, ...
        'Repeat', 1);
    words = map.Data.all(:, first:last);
else
    words = readPart(file, wordsInRecord, type, first, last, bytesInWord);
end
end

function words = readPart(file, wordsInRecord, type, first, last, bytesInWord)
id = fopen(file.path, 'r', 'ieee-le');
if id < 0
    error('stalwick:open', '%s: cannot open it', file.path);
end
close = onCleanup(@() fclose(id));
fseek(id, 16384 + (first - 1) * wordsInRecord * bytesInWord, 'bof');
words = fread(id, [wordsInRecord, last - first + 1], [type '=>' type]);
if size(words, 2) ~= last - first + 1
    error('stalwick:damaged', '%s: it became shorter while it was read', file.path);
end
end

% SPDX-License-Identifier: BSD-3-Clause
