function header = parseHeader(block, path, type)
%PARSEHEADER  The fields of a header block by their keys; every line must match the format.
if numel(block) < 16384
    fail(path, numel(block), 'the file ends inside its header block of 16384 bytes');
end
lines = splitLines(block(:)', path);
expected = expectedLines(type);
if numel(lines) ~= size(expected, 1)
    fail(path, 0, sprintf('the header has %d lines after its title, not %d', ...
        numel(lines), size(expected, 1)));
end
header = struct();
for k = 1:numel(lines)
    key = expected{k, 1};
    if isempty(key)
        value = {''};
        right = isempty(lines{k});
    else
        value = regexp(lines{k}, ['^-' key ' (' expected{k, 2} ')$'], 'tokens', 'once');
        right = ~isempty(value);
    end
    if ~right
        fail(path, 0, sprintf('header line %d is "%s", not the %s of a %s file', ...
            k + 1, lines{k}, key, type));
    end
    if ~isempty(key)
        header.(key) = convert(key, value{1});
    end
end
checkChannel(header, path, type);
end

function lines = splitLines(block, path)
textSize = find([block, 0] == 0, 1) - 1;
if any(block(textSize + 1:end))
    fail(path, textSize + find(block(textSize + 1:end), 1) - 1, 'the header''s padding is not zero');
end
% For bytes that are not UTF-8, Octave reports an error and MATLAB puts in others.
try
    text = native2unicode(block(1:textSize), 'UTF-8');
    again = unicode2native(text, 'UTF-8');
    same = isequal(again(:)', block(1:textSize));
catch
    same = false;
end
if ~same
    fail(path, 0, 'the header is not UTF-8');
end
title = ['######## Veltrosyn Data File Header' char([13 10])];
if ~strncmp(text, title, numel(title))
    fail(path, 0, 'it does not begin like an output of Veltrosyn Stalwick');
end
if ~strcmp(text(end - 1:end), char([13 10]))
    fail(path, textSize, 'the header''s last line has no end');
end
lines = strsplit(text(numel(title) + 1:end - 2), char([13 10]), 'CollapseDelimiters', false);
end

function lines = expectedLines(type)
digit = '[0-9]';
time = [digit '{4}/(?:0[1-9]|1[0-2])/(?:0[1-9]|[12]' digit '|3[01]) ' ...
    '(?:[01]' digit '|2[0-3]):[0-5]' digit ':(?:[0-5]' digit '|60)'];
hex = '[0-9a-f]';
uuid = [hex '{8}-' hex '{4}-4' hex '{3}-[89ab]' hex '{3}-' hex '{12}'];
number = '[0-9]+(?:\.[0-9]+)?(?:e[+-][0-9]+)?';
axes = '(?:LAX|LAY|LAZ|AVX|AVY|AVZ|MX|MY|MZ)';
fixed = struct('CSC', {{'3\.4', '1044', ['CSC[1-9][0-9]{0,2}|(?:Base|AFE)_' axes '|Ultrasonic']}}, ...
    'Event', {{'3\.2', '184', 'Events'}}, 'Raw', {{'3\.4', '0', 'RawData'}});
fixed = fixed.(type);
lines = {'FileType', type; 'FileVersion', fixed{1}; 'FileUUID', uuid; 'SessionUUID', '.*'
    'OriginalFileName', '".*"?'; 'TimeCreated', time
    'TimeClosed', [time '|File was not closed properly']; '', ''; 'RecordSize', fixed{2}
    'ApplicationName', '"Veltrosyn Stalwick" "[^"]+"'; 'AcquisitionSystem', 'Unknown .*'
    'AcqEntName', fixed{3}};
switch type
    case 'CSC'
        lines = [lines; {'ProbeName', 'Unknown'
            'ReferenceChannel', '"External Hardware Reference"'; 'SamplingFrequency', number
            'ADMaxValue', '[0-9]+'; 'ADBitVolts', '0\.000003999999999999999819'
            'NumADChannels', '1'; 'ADChannel', '[0-9]{1,3}'; 'InputRange', '131072'}];
    case 'Raw'
        lines = [lines; {'SamplingFrequency', number; 'ADMaxValue', '8388608'
            'ADBitVolts', '1\.562500e-08'; 'NumADChannels', '[0-9]{1,3}'}];
end
end

function value = convert(key, text)
numbers = {'RecordSize', 'SamplingFrequency', 'ADMaxValue', 'ADBitVolts', 'NumADChannels', ...
    'ADChannel', 'InputRange'};
value = text;
if any(strcmp(key, numbers))
    value = str2double(text);
elseif strcmp(text, 'File was not closed properly')
    value = '';
elseif strcmp(key, 'OriginalFileName')
    value = regexprep(text, '^"|"$', '');
end
end

function checkChannel(header, path, type)
if strcmp(type, 'Raw') && header.NumADChannels > 256
    fail(path, 0, 'more than 256 channels in the header');
end
if ~strcmp(type, 'CSC')
    return
end
axes = {'LAX', 'LAY', 'LAZ', 'AVX', 'AVY', 'AVZ', 'MX', 'MY', 'MZ'};
name = header.AcqEntName;
if strncmp(name, 'CSC', 3)
    index = str2double(name(4:end)) - 1;
elseif strcmp(name, 'Ultrasonic')
    index = 0;
else
    index = find(strcmp(name(find(name == '_') + 1:end), axes)) - 1;
end
if index > 255 || header.ADChannel ~= index
    fail(path, 0, sprintf('-ADChannel in the header is not that of %s', name));
end
end

function fail(path, byte, reason)
error('stalwick:damaged', '%s: byte %d: %s; convert the recording again', path, byte, reason);
end

% SPDX-License-Identifier: BSD-3-Clause
