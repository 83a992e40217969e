// SPDX-License-Identifier: BSD-3-Clause
#include "engine/data_processor.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr ChannelOptions kChannels = {1, 0, 0, 0};

// A processor and a directory for its inputs and outputs.
struct Processing {
    Processing() { MakeDirectory(directory.Path(L"out")); }

    std::int32_t Process(const std::vector<std::wstring>& files, std::uint8_t events = 1,
                         std::uint8_t raw = 0, const ChannelOptions& options = kChannels) {
        return processor.ProcessFile(files, directory.Path(L"out"), options, events, raw);
    }
    std::wstring Put(const std::string& recording, const std::wstring& name = L"rec.ord") {
        return PutRecording(directory, recording, name);
    }
    std::set<std::string> Outputs(const std::wstring& name = L"rec") const {
        return NamesIn(directory.Path(L"out") + kPathSeparator + name);
    }

    TempDirectory directory;
    DataProcessor processor{QuickSettings()};
};

std::string Recording(std::size_t packetCount) {
    return BuildOrdFile(Version1Header(1), std::vector<PacketPlan>(packetCount));
}

TEST(DataProcessor, NoFilesAreDoneAtOnce) {
    Processing processing;
    processing.processor.recordsProcessed.store(7);
    EXPECT_EQ(processing.Process({}), 0);
    EXPECT_EQ(processing.processor.recordsProcessed.load(), 0U);
}

TEST(DataProcessor, RecordsAreCountedAcrossTheFilesOfACallAndFromZeroInTheNext) {
    Processing processing;
    const std::wstring first = processing.Put(Recording(3), L"a.ord");
    const std::wstring second = processing.Put(Recording(4), L"b.ord");
    EXPECT_EQ(processing.Process({first, second}), 0);
    EXPECT_EQ(processing.processor.recordsProcessed.load(), 7U);
    EXPECT_EQ(processing.Process({first}), 0);
    EXPECT_EQ(processing.processor.recordsProcessed.load(), 3U);
}

TEST(DataProcessor, BytesAreCountedForTheProgress) {
    Processing processing;
    const std::string recording = Recording(9000);
    EXPECT_EQ(processing.Process({processing.Put(recording)}), 0);
    EXPECT_EQ(processing.processor.bytesTotal.load(), recording.size());
    EXPECT_EQ(processing.processor.bytesProcessed.load(), recording.size());
}

TEST(DataProcessor, FailureWithoutTextKeepsTheOldOne) {
    Processing processing;
    WriteFile(processing.directory.Path(L"out") + kPathSeparator + L"rec", "in the way");
    processing.processor.SetErrorMessage(L"an old text");
    EXPECT_EQ(processing.Process({processing.Put(Recording(1))}), -1);
    EXPECT_EQ(processing.processor.GetErrorMessage(), L"an old text");
}

TEST(DataProcessor, SuccessKeepsTheOldTextToo) {
    Processing processing;
    processing.processor.SetErrorMessage(L"an old text");
    EXPECT_EQ(processing.Process({processing.Put(Recording(1))}), 0);
    EXPECT_EQ(processing.processor.GetErrorMessage(), L"an old text");
}

TEST(DataProcessor, NewTextReplacesTheOldOne) {
    Processing processing;
    processing.processor.SetErrorMessage(L"an old text");
    EXPECT_EQ(processing.Process({processing.Put("")}), -1);
    EXPECT_EQ(processing.processor.GetErrorMessage(),
              L"Error retrieving header field -NumADChannels");
}

TEST(DataProcessor, EventAndRawSwitchesAreComparedWithOne) {
    Processing processing;
    EXPECT_EQ(processing.Process({processing.Put(Recording(1))}, 2, 255), 0);
    EXPECT_EQ(processing.Outputs(), std::set<std::string>{"CSC1.vcs"});
    EXPECT_EQ(processing.Process({processing.Put(Recording(1), L"b.ord")}, 1, 1), 0);
    EXPECT_EQ(processing.Outputs(L"b"),
              (std::set<std::string>{"CSC1.vcs", "Events.vev", "RawData.vrd"}));
}

TEST(DataProcessor, AnyChannelOptionButZeroIsOn) {
    Processing processing;
    EXPECT_EQ(processing.Process({processing.Put(Recording(1))}, 1, 0, {2, 0, 0, 0}), 0);
    EXPECT_EQ(processing.Outputs(), (std::set<std::string>{"CSC1.vcs", "Events.vev"}));
}

TEST(DataProcessor, NameEndsAtItsLastPoint) {
    Processing processing;
    EXPECT_EQ(processing.Process({processing.Put(Recording(1), L"a.b.ord")}), 0);
    EXPECT_EQ(processing.Outputs(L"a.b").size(), 2U);
    EXPECT_EQ(processing.Process({processing.Put(Recording(1), L"plain")}), 0);
    EXPECT_EQ(processing.Outputs(L"plain").size(), 2U);
}

TEST(DataProcessor, NameThatIsOnlyAnExtensionIsEmpty) {
    Processing processing;
    EXPECT_EQ(processing.Process({processing.Put(Recording(1), L".ord")}), 0);
    EXPECT_EQ(processing.Outputs(L""), (std::set<std::string>{"CSC1.vcs", "Events.vev"}));
}

TEST(DataProcessor, PathsWithAnyCharactersConvert) {
    Processing processing;
    const std::wstring name = L"r\u00E9c \u03BC\u65E5";
    EXPECT_EQ(processing.Process({processing.Put(Recording(1), name + L".ord")}), 0);
    EXPECT_EQ(processing.Outputs(name).size(), 2U);
    EXPECT_EQ(processing.Process({processing.Put(Recording(1), name + L".ord")}), 0);
    EXPECT_TRUE(processing.Outputs(name).contains("CSC1_01.vcs"));
}

TEST(DataProcessor, DetailsAreKeptUntilTheyAreCleared) {
    Processing processing;
    EXPECT_EQ(processing.Process({processing.Put("")}), -1);
    EXPECT_EQ(processing.Process({processing.Put("")}), -1);
    EXPECT_EQ(processing.processor.Details().size(), 2U);
    processing.processor.ClearDetails();
    EXPECT_TRUE(processing.processor.Details().empty());
}

}  // namespace
}  // namespace stalwick::test
