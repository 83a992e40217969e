function file = readVcs(path, varargin)
%READVCS  Samples of one channel file (.vcs).
%
%   file = stalwick.readVcs(path)
%   file = stalwick.readVcs(path, 'Range', [first last])     samples first to last, from 1
%   file = stalwick.readVcs(path, 'AllowIncomplete', true)   also a file that was not closed
%
%   file.samples            int16 column
%   file.times              int64 column, microseconds
%   file.microvoltsPerStep  double(file.samples) * this are microvolts
%   file.samplingFrequency  samples per second
%   file.numSamples         in the whole file
%   file.gaps               struct array, one per step of the records' times: it is after sample
%                           startSample and before sample endSample, and missingSamples long
%   file.name, file.header  the channel's name; the header fields
%
%   A file that violates the format is an error that names file, record and byte; records
%   and bytes count from 0. docs/output-files.md describes the format.
options = stalwick.internal.options(varargin);
file = stalwick.internal.openChannel(path, options.allowIncomplete);
layout = stalwick.internal.channelLayout(file);
[first, last] = stalwick.internal.checkRange(options.range, layout.starts(end), path);
file.samples = stalwick.internal.readSamples(file, layout, first, last);
file.times = stalwick.internal.sampleTimes(layout, first, last);
file.numSamples = layout.starts(end);
file.samplingFrequency = layout.rate;
file.microvoltsPerStep = 4;
file.gaps = stalwick.internal.findGaps(layout);
end

% SPDX-License-Identifier: BSD-3-Clause
