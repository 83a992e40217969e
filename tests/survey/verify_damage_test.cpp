// SPDX-License-Identifier: BSD-3-Clause

// VerifyOutputs on sets in which a byte was changed, a file was truncated, or two were swapped.

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "survey/verify_outputs.h"
#include "tests/support/case_step.h"
#include "tests/survey/output_set_in_memory.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kHeader = 16384;

// A set with several records in each file: 32 channels, every block in every packet.
ReferenceConvertInput MakeInput(std::size_t packets, unsigned announcedChannels = 32) {
    RandomRecordingShape shape;
    shape.packetCount = packets;
    shape.packet.stateBytePerSample = true;
    shape.packet.baseImu = shape.packet.afeImu = shape.packet.ultrasonic = true;
    return EveryOutput(
        BuildOrdFile(Version2Header(announcedChannels), MakeRandomPackets(7, shape)));
}

OutputSetInMemory MakeSet(std::size_t packets = 530) {  // two inertial records
    return OutputSetInMemory(MakeInput(packets));
}

void ChangeByte(std::string& bytes, std::size_t at, std::mt19937_64& random) {
    bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ (1 + random() % 255));
}

bool Names(const VerifyReport& report, const std::string& file) {
    for (const OutputFinding& finding : report.sets.front().findings) {
        if (finding.path == OutputSetInMemory::PathOf(FromUtf8(file))) return true;
    }
    return false;
}

TEST(VerifyDamage, EachOfAThousandByteChangesInRawRecordsIsFoundAtItsRecord) {
    OutputSetInMemory set = MakeSet();
    ASSERT_TRUE(set.Verify().IsWhole()) << Findings(set.Verify());
    std::string& raw = set.outputs.at("RawData.vrd");
    constexpr std::size_t kRecord = 50 * 4;
    std::mt19937_64 random(1);
    for (std::size_t i = 0; i < 1000; i += kCaseStep) {
        const std::string before = raw;
        const std::size_t at = kHeader + random() % (raw.size() - kHeader);
        ChangeByte(raw, at, random);
        const VerifyReport report = set.Verify();
        ASSERT_FALSE(report.sets.front().findings.empty()) << "byte " << at;
        const OutputFinding& finding = report.sets.front().findings.front();
        EXPECT_EQ(finding.record, (at - kHeader) / kRecord) << "byte " << at << Findings(report);
        raw = before;
    }
}

TEST(VerifyDamage, EachOfAThousandByteChangesInAnyOutputIsFoundAgainstTheRecording) {
    OutputSetInMemory set = MakeSet();
    ASSERT_TRUE(set.Compare().IsWhole()) << Findings(set.Compare());
    std::vector<std::string> names;
    for (const auto& file : set.outputs) names.push_back(file.first);
    std::mt19937_64 random(2);
    for (std::size_t i = 0; i < 1000; i += kCaseStep) {
        const std::string& name = names[random() % names.size()];
        std::string& bytes = set.outputs.at(name);
        const std::string before = bytes;
        const std::size_t at = kHeader + random() % (bytes.size() - kHeader);
        ChangeByte(bytes, at, random);
        const VerifyReport report = set.Compare();
        ASSERT_EQ(report.sets.front().findings.size(), 1U) << name << " byte " << at;
        const OutputFinding& finding = report.sets.front().findings.front();
        EXPECT_EQ(finding.path, OutputSetInMemory::PathOf(FromUtf8(name)));
        EXPECT_EQ(finding.byte, at);
        bytes = before;
    }
}

// If a change leaves a UUID or a time of the right form, it cannot be detected.
bool IsFreeText(const std::string& header, std::size_t at, const std::string& changed) {
    const auto line = header.rfind('\n', at) + 1;
    const auto starts = [&](const char* key) {
        return header.compare(line, std::string(key).size(), key) == 0;
    };
    const auto value = header.find(' ', line);
    if (at <= value || header[at] == '\r' || header[at] == '\n') return false;
    const char c = changed[at];
    const bool digit = c >= '0' && c <= '9';
    if (starts("-FileUUID ")) return digit || (c >= 'a' && c <= 'f');
    return (starts("-TimeCreated ") || starts("-TimeClosed ")) && digit;
}

TEST(VerifyDamage, EveryByteOfAHeaderIsChecked) {
    ReferenceConvertInput input = MakeInput(20, 4);
    input.options.afeImu = false;
    OutputSetInMemory set(input);
    std::mt19937_64 random(3);
    for (const std::string name :
         {"CSC3.vcs", "Base_LAX.vcs", "Ultrasonic.vcs", "Events.vev", "RawData.vrd"}) {
        std::string& bytes = set.outputs.at(name);
        const std::size_t textSize = bytes.find('\0');
        for (std::size_t at = 0; at < textSize + 5; at += kCaseStep) {
            const std::string before = bytes;
            ChangeByte(bytes, at, random);
            for (const VerifyReport& report : {set.Verify(), set.Compare()}) {
                if (IsFreeText(before, at, bytes)) continue;
                EXPECT_FALSE(report.IsWhole()) << name << " byte " << at << ": "
                                               << testing::PrintToString(bytes.substr(at, 20));
                EXPECT_TRUE(Names(report, name)) << name << " byte " << at << Findings(report);
            }
            bytes = before;
        }
        ChangeByte(bytes, kHeader - 1, random);
        EXPECT_FALSE(set.Verify().IsWhole());
        bytes[kHeader - 1] = '\0';
    }
}

std::vector<std::size_t> LengthsToCutTo(const std::string& bytes, std::size_t recordSize,
                                        std::mt19937_64& random) {
    std::vector<std::size_t> lengths = {0, 1, 300, kHeader - 1};
    for (std::size_t end = kHeader; end < bytes.size(); end += recordSize) lengths.push_back(end);
    for (int i = 0; i < 40; ++i) lengths.push_back(random() % bytes.size());
    lengths.push_back(bytes.size() - 1);
    return lengths;
}

TEST(VerifyDamage, EveryTruncationIsFound) {
    OutputSetInMemory set = MakeSet();
    std::mt19937_64 random(4);
    for (const std::string name :
         {"CSC1.vcs", "CSC32.vcs", "AFE_MZ.vcs", "Ultrasonic.vcs", "Events.vev", "RawData.vrd"}) {
        std::string& bytes = set.outputs.at(name);
        const std::size_t recordSize = name.ends_with("vcs")   ? 1044
                                       : name.ends_with("vev") ? std::size_t{50} * 184
                                                               : std::size_t{70} * 200;
        const std::vector<std::size_t> lengths = LengthsToCutTo(bytes, recordSize, random);
        for (std::size_t i = 0; i < lengths.size(); i += kCaseStep) {
            const std::size_t length = lengths[i];
            const std::string before = bytes;
            bytes.resize(length);
            EXPECT_TRUE(Names(set.Compare(), name)) << name << " cut to " << length;
            // Nothing else in the set shows how many ultrasonic records there should be.
            const bool hidden = name == "Ultrasonic.vcs" && length >= kHeader &&
                                (length - kHeader) % recordSize == 0;
            if (!hidden) {
                EXPECT_FALSE(set.Verify().IsWhole()) << name << " cut to " << length;
            }
            bytes = before;
        }
    }
}

TEST(VerifyDamage, EverySwapOfTwoFilesIsFound) {
    OutputSetInMemory set = MakeSet(100);
    std::size_t pair = 0;
    for (auto one = set.outputs.begin(); one != set.outputs.end(); ++one) {
        for (auto other = std::next(one); other != set.outputs.end(); ++other) {
            if (pair++ % kCaseStep != 0) continue;
            one->second.swap(other->second);
            const VerifyReport report = set.Verify();
            EXPECT_TRUE(Names(report, one->first)) << one->first << ' ' << other->first;
            EXPECT_TRUE(Names(report, other->first)) << one->first << ' ' << other->first;
            one->second.swap(other->second);
        }
    }
    set.outputs.at("CSC1.vcs").swap(set.outputs.at("CSC2.vcs"));
    EXPECT_TRUE(Names(set.Compare(), "CSC1.vcs"));
}

// The headers stay in place, and only the records are swapped: the recording reveals it.
TEST(VerifyDamage, SwappedRecordsAreFoundAgainstTheRecording) {
    OutputSetInMemory set = MakeSet();
    const std::string one = set.outputs.at("CSC1.vcs");
    const std::string other = set.outputs.at("CSC2.vcs");
    set.outputs["CSC1.vcs"] = one.substr(0, kHeader) + other.substr(kHeader);
    EXPECT_TRUE(Names(set.Compare(), "CSC1.vcs"));
    EXPECT_TRUE(Names(set.Verify(), "CSC1.vcs"));  // by its channel number
}

TEST(VerifyDamage, BytesThatWereAddedAreFound) {
    OutputSetInMemory set = MakeSet();
    for (const std::string name : {"CSC1.vcs", "Events.vev", "RawData.vrd"}) {
        std::string& bytes = set.outputs.at(name);
        const std::string before = bytes;
        bytes += bytes.substr(kHeader, name == "RawData.vrd" ? 2000
                                       : name == "CSC1.vcs"  ? 1044
                                                             : 184);
        EXPECT_TRUE(Names(set.Compare(), name)) << name;
        bytes = before + std::string(3, '\0');
        EXPECT_TRUE(Names(set.Compare(), name)) << name;
        EXPECT_TRUE(Names(set.Verify(), name)) << name;
        bytes = before;
    }
}

// What the set alone reveals about a record.
TEST(VerifyDamage, FieldsOfARecordAreCheckedWithoutTheRecordingToo) {
    OutputSetInMemory set = MakeSet();
    struct Case {
        const char* file;
        std::size_t at;  // byte of the records
        std::size_t size;
        const char* text;
    };
    const std::size_t last = set.outputs.at("CSC2.vcs").size() - kHeader - 2;
    const Case cases[] = {{"CSC2.vcs", 1044, 2, "the times of its records differ"},
                          {"CSC2.vcs", 1044 + 8, 4, "its channel number is"},
                          {"CSC2.vcs", 1044 + 12, 4, "its sampling frequency is"},
                          {"CSC2.vcs", 1044 + 16, 4, "samples"},
                          {"CSC2.vcs", last, 2, "samples after its"},
                          {"Events.vev", 184, 6, "reserved bytes of it"},
                          {"Events.vev", 184 + 13, 1, "microseconds earlier"},
                          {"Events.vev", 184 + 14, 2, "its event number is"},
                          {"Events.vev", 184 + 17, 1, "its TTL value is"},
                          {"Events.vev", 184 + 18, 38, "reserved bytes of it"},
                          {"Events.vev", 184 + 56, 128, "its text is not"}};
    for (const Case& it : cases) {
        std::string& bytes = set.outputs.at(it.file);
        for (std::size_t i = 0; i < it.size; ++i) {
            char& byte = bytes[kHeader + it.at + i];
            const char before = byte;
            byte = static_cast<char>(before ^ 0x40);
            const VerifyReport report = set.Verify();
            EXPECT_TRUE(Names(report, it.file)) << it.file << " byte " << it.at + i;
            EXPECT_NE(Findings(report).find(it.text), std::string::npos)
                << it.text << " at " << i << Findings(report);
            byte = before;
        }
    }
}

TEST(VerifyDamage, RecordingThatIsDamagedItselfIsAFindingAndComparedBeforeThat) {
    OutputSetInMemory set = MakeSet();
    std::string& recording = set.Recording();
    ASSERT_GT(recording.size(), kHeader + 2 * 50'000);
    // From here on there are no packets.
    recording.replace(kHeader + 60'000, recording.size() - kHeader - 60'000,
                      recording.size() - kHeader - 60'000, '\0');
    const VerifyReport report = set.Compare();
    EXPECT_NE(Findings(report).find("in/rec.ord byte "), std::string::npos) << Findings(report);
    EXPECT_NE(Findings(report).find("CSC1.vcs record"), std::string::npos) << Findings(report);
    for (const OutputFinding& finding : report.sets.front().findings) {
        EXPECT_EQ(finding.text.find(L"its sample"), std::wstring::npos) << Findings(report);
    }
}

TEST(VerifyDamage, ASectorOfZerosInRawRecordsIsOneFindingAndTheRestIsChecked) {
    OutputSetInMemory set = MakeSet();
    std::string& raw = set.outputs.at("RawData.vrd");
    raw.replace(kHeader + 20'000, 4096, 4096, '\0');
    raw[kHeader + 60'000] = '\1';
    const VerifyReport report = set.Verify();
    EXPECT_EQ(report.sets.front().findingCount, 2U) << Findings(report);
    EXPECT_EQ(report.sets.front().findings.front().record, 100U);
    EXPECT_EQ(report.sets.front().findings.front().byte, kHeader + 20'000);
}

}  // namespace
}  // namespace stalwick::test
