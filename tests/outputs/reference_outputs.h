// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/reference_writers.h"

// Whole output files from the reference, as input for the readers.

namespace stalwick::test {

inline ReferenceHeaderLines HeaderLinesOf(const std::string& type, std::uint32_t recordSize,
                                          const std::string& entity) {
    ReferenceHeaderLines lines;
    lines.fileType = type;
    lines.fileVersion = type == "Event" ? "3.2" : "3.4";
    lines.fileUuid = "00112233-4455-4677-8899-aabbccddeeff";
    lines.sessionUuid = "0b5e3b8e-6d2c-4c7e-9a51-3f0c8d5b7a10";
    lines.path = "/data/out/rec/" + entity;
    lines.timeCreated = "2021/03/04 09:05:07";
    lines.recordSize = recordSize;
    lines.acquisitionSystem = "Unit 3";
    lines.acqEntName = entity;
    return lines;
}

/** Channel 3 of a recording at 30 kHz: samples 0, 1, 2 ... in packets of ten. */
inline std::string ReferenceChannelBytes(std::size_t packets, bool closed = true) {
    ReferenceChannelFile file;
    file.lines = HeaderLinesOf("CSC", 1044, "CSC3");
    if (closed) file.lines.timeClosed = "2021/03/04 09:07:12";
    file.headerText = ReferenceCommonHeader(file.lines) + ReferenceChannelLines(30000.0, 32767, 2);
    file.channelIndex = 2;
    file.samplingFrequency = 30000.0;
    for (std::size_t packet = 0; packet < packets; ++packet) {
        std::int16_t samples[10];
        for (std::size_t i = 0; i < 10; ++i) {
            samples[i] = static_cast<std::int16_t>(packet * 10 + i);
        }
        file.WriteSamples(samples, 10, 1'000'000'000 + packet * 333'333);
    }
    file.WriteRest();
    return file.Bytes();
}

/** `changes` TTL changes, the values 1, 2, 3 ... , a millisecond apart. */
inline std::string ReferenceEventBytes(std::size_t changes) {
    ReferenceEventFile file;
    file.lines = HeaderLinesOf("Event", 184, "Events");
    file.headerText = ReferenceCommonHeader(file.lines);
    for (std::size_t i = 0; i <= changes; ++i) {
        file.WriteTtlValues({static_cast<std::uint8_t>(i)}, 1'000'000 * i, 0.0);
    }
    file.WritePending();
    return file.Bytes();
}

/** Raw records of `packets` packets, the sample of channel j at instant i being 100 j + 4 i. */
inline std::string ReferenceRawBytes(std::uint32_t channels, std::size_t packets) {
    ReferenceRawFile file;
    file.lines = HeaderLinesOf("Raw", 0, "RawData");
    file.lines.timeClosed = "2021/03/04 09:07:12";
    file.headerText = ReferenceCommonHeader(file.lines) + ReferenceRawLines(30000.0, channels);
    file.adChannelCount = channels;
    file.samplingFrequency = 30000.0;
    std::vector<std::uint16_t> samples(std::size_t{channels} * 10);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint16_t>(i / 10 * 100 + i % 10 * 4);
    }
    for (std::size_t packet = 0; packet < packets; ++packet) {
        file.WriteRecords(samples, {static_cast<std::uint8_t>(packet)}, 333'000 * (packet + 1));
    }
    file.WritePending();
    return file.Bytes();
}

}  // namespace stalwick::test
