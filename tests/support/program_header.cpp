// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/program_header.h"

#include "ord/header_fields.h"

namespace stalwick::test {

ReferenceHeaderFields ToReference(const RecordingHeader& header) {
    ReferenceHeaderFields fields;
    fields.numADChannels = header.numADChannels;
    fields.samplingFrequency = header.samplingFrequency;
    fields.adMaxValue = header.adMaxValue;
    fields.adBitVolts = header.adBitVolts;
    fields.inputRange = header.inputRange;
    fields.fileVersion = header.fileVersion;
    fields.versionNumber = VersionStringToNumber(header.fileVersion);
    fields.utcOffsetMicroseconds = header.utcOffsetMicroseconds;
    fields.sessionUuid = header.sessionUuid;
    fields.acquisitionSystem = header.acquisitionSystem;
    fields.ultrasonicAvailable = header.ultrasonicAvailable;
    fields.baseImuAvailable = header.baseImuAvailable;
    fields.afeImuAvailable = header.afeImuAvailable;
    return fields;
}

ReferenceHeaderFields ProgramHeaderFields(const std::wstring& headerText) {
    RecordingHeader header;
    std::wstring error;
    if (ReadRecordingHeader(headerText, header, error) == 0) return ToReference(header);
    ReferenceHeaderFields fields;
    fields.errorText = error;
    return fields;
}

}  // namespace stalwick::test
