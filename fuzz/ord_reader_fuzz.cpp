// SPDX-License-Identifier: BSD-3-Clause

// The reader on a whole file, read in pieces of any size, compared with the span reader.

#include "fuzz/recording_input.h"
#include "ord/header_fields.h"
#include "ord/ord_file_reader.h"
#include "tests/support/memory_file_calls.h"
#include "tests/support/plain_packet.h"
#include "tests/support/program_header.h"

namespace stalwick::fuzz {

namespace {

constexpr wchar_t kPath[] = L"in.ord";

// How much one call of the system returns: everything, or little.
std::size_t PieceSize(std::uint8_t options) {
    return options % 8 == 0 ? SIZE_MAX : std::size_t{100} * (options % 8);
}

void CompareHeader(const ORDFileReader& reader, bool opened,
                   const test::ReferenceHeaderFields& expected) {
    Require(opened == expected.errorText.empty(), "the header was taken otherwise");
    if (!opened) {
        Require(reader.GetErrorMessage() == expected.errorText, "another error text");
        return;
    }
    Require(test::ToReference(reader.Header()) == expected, "another field of the header");
}

void CompareStream(ORDFileReader& reader, const RecordingInput& input) {
    const std::string& recording = input.recording;
    const std::size_t headerSize = std::min(recording.size(), input.sizes.header);
    test::ReferenceSpanReader expected(recording.substr(headerSize),
                                       VersionStringToNumber(reader.FileVersion()),
                                       input.sizes.span);
    static std::vector<ORDDataPacket> packets;  // reused, as the conversion does
    for (bool endOfFile = false; !endOfFile;) {
        const bool failed = reader.GetData(packets, endOfFile) != 0;
        const test::ReferenceSpanReader::Result span = expected.GetData();
        Require(failed == span.failed, "the span was taken otherwise");
        if (failed) return;
        Require(endOfFile == span.endOfFile, "another end of the file");
        Require(packets.size() == span.packets.size(), "another number of packets");
        for (std::size_t i = 0; i < packets.size(); ++i) {
            Require(test::ToReference(packets[i]) == span.packets[i], "another packet");
        }
    }
    Require(reader.BytesRead() == recording.size(), "the file was not read to its end");
}

}  // namespace

std::vector<std::string> MakeSeeds() {
    std::vector<std::string> seeds;
    for (const int options : {0, 3}) {
        const auto more = MakeRecordingSeeds(static_cast<std::uint8_t>(options));
        seeds.insert(seeds.end(), more.begin(), more.end());
    }
    return seeds;
}

}  // namespace stalwick::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stalwick;
    const fuzz::RecordingInput input = fuzz::ReadRecordingInput(data, size);
    test::MemoryFileCalls disk;
    disk.mostBytesPerRead = fuzz::PieceSize(input.options);
    disk.files[fuzz::kPath] = input.recording;
    SetReadSizes(input.sizes);
    {
        ORDFileReader reader;
        const bool opened = reader.Open(fuzz::kPath) == 0;
        if (fuzz::IsForThePatterns(input)) {
            fuzz::CompareHeader(reader, opened, fuzz::FieldsByThePatterns(input));
        }
        if (opened) {
            fuzz::CompareStream(reader, input);
            fuzz::Require(reader.Close() == 0, "the file could not be closed");
        }
    }
    fuzz::Require(disk.openCount == 0, "a file was left open");
    return 0;
}
