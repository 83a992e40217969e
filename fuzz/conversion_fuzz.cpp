// SPDX-License-Identifier: BSD-3-Clause

// A whole conversion, with files in memory, compared with the reference conversion.

#include "engine/conversion_job.h"
#include "fuzz/recording_input.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/fixed_identity.h"
#include "tests/support/memory_file_calls.h"
#include "tests/support/temp_directory.h"

namespace stalwick::fuzz {

namespace {

constexpr wchar_t kInputPath[] = L"in/rec.ord";

test::ReferenceConvertOptions OutputsOf(std::uint8_t options) {
    test::ReferenceConvertOptions outputs;
    outputs.csc = (options & 1U) == 0;
    outputs.baseImu = (options & 2U) != 0;
    outputs.afeImu = (options & 4U) != 0;
    outputs.ultrasonic = (options & 8U) != 0;
    outputs.raw = (options & 16U) != 0;
    return outputs;
}

// So few that short recordings are written in several pieces.
constexpr std::uint32_t kRecordsPerWrite = 2;

OutputSettings SettingsOf(std::uint8_t options) {
    OutputSettings settings = test::QuickSettings();
    settings.recordsPerWrite = kRecordsPerWrite;
    settings.helperThreads = (options & 32U) != 0 ? HelperThreads::kOn : HelperThreads::kOff;
    return settings;
}

// The directory is real and created once; the files in it are not.
const test::TempDirectory& Directory() {
    static const test::TempDirectory directory;
    return directory;
}

test::ReferenceConvertResult ConvertByReference(const RecordingInput& input) {
    test::ReferenceConvertInput reference;
    reference.recording = input.recording;
    reference.options = OutputsOf(input.options);
    reference.outputDirectory = ToUtf8(Directory().Path(L"out"));
    reference.fileName = "rec.ord";
    reference.clockText = test::kFixedTimeText;
    reference.uuidText = test::kFixedUuidText;
    reference.separator = ToUtf8(std::wstring(1, kPathSeparator));
    reference.headerBytes = input.sizes.header;
    reference.spanBytes = input.sizes.span;
    reference.fields =
        IsForThePatterns(input) ? FieldsByThePatterns(input) : FieldsByTheProgram(input);
    return test::ReferenceConvert(reference);
}

void CompareFiles(const test::MemoryFileCalls& disk, const test::ReferenceConvertResult& expected) {
    const std::wstring directory = Directory().Path(L"out") + kPathSeparator + L"rec";
    std::size_t compared = 0;
    for (const auto& [path, bytes] : disk.files) {
        if (path == kInputPath) continue;
        const auto file = expected.files.find(ToUtf8(path.substr(directory.size() + 1)));
        Require(file != expected.files.end(), "a file too many");
        Require(file->second == bytes, "other bytes in " + file->first);
        ++compared;
    }
    Require(compared == expected.files.size(), "a file too few");
}

}  // namespace

std::vector<std::string> MakeSeeds() {
    std::vector<std::string> seeds;
    for (const int options : {0, 30, 17, 8}) {
        const auto more = MakeRecordingSeeds(static_cast<std::uint8_t>(options));
        seeds.insert(seeds.end(), more.begin(), more.end());
    }
    return seeds;
}

}  // namespace stalwick::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stalwick;
    const fuzz::RecordingInput input = fuzz::ReadRecordingInput(data, size);
    const test::FixedIdentity identity;
    DataProcessor processor(fuzz::SettingsOf(input.options));
    std::wstring status;
    const ConversionJob job = test::MakeJob(fuzz::Directory(), {fuzz::kInputPath},
                                            fuzz::OutputsOf(input.options), processor, status);
    test::MemoryFileCalls disk;
    disk.files[fuzz::kInputPath] = input.recording;
    SetReadSizes(input.sizes);
    RunConversionJob(job);
    fuzz::Require(disk.openCount == 0, "a file was left open");

    const test::ReferenceConvertResult expected = fuzz::ConvertByReference(input);
    fuzz::Require(ToUtf8(status) == expected.statusText, "another status text");
    fuzz::Require(processor.recordsProcessed.load() == expected.packetCount,
                  "another number of packets");
    fuzz::CompareFiles(disk, expected);
    return 0;
}
