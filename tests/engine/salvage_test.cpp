// SPDX-License-Identifier: BSD-3-Clause

// Conversions that skip damage.

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "outputs/vtx_data_types.h"
#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kPackets = 300;
constexpr std::size_t kBeforeDamage = 100;
// Without timestamps: the damaged one, the two before it that are not followed by two packets, and
// the first one after.
constexpr std::size_t kLost = 4;

OutputSettings Salvage() {
    OutputSettings settings = QuickSettings();
    settings.onDamage = OnDamage::kSkip;
    return settings;
}

std::vector<PacketPlan> Packets(bool timestamps) {
    RandomRecordingShape shape;
    shape.timestamps = timestamps;
    shape.packet.ultrasonic = true;
    shape.packet.baseImu = true;
    shape.packetCount = kPackets;
    return MakeRandomPackets(81, shape);
}

OrdHeaderText Header(bool timestamps) {
    return timestamps ? Version2Header(32) : Version1Header(32);
}

// Another type byte in the packet after those before the damage.
std::string Damaged(bool timestamps) {
    std::vector<PacketPlan> plans = Packets(timestamps);
    plans[kBeforeDamage].packetType = 5;
    return BuildOrdFile(Header(timestamps), plans);
}

std::vector<VtxDataTypes::CRRec> RecordsOf(const std::string& file) {
    std::vector<VtxDataTypes::CRRec> records((file.size() - kOrdHeaderBytes) /
                                             sizeof(VtxDataTypes::CRRec));
    std::memcpy(records.data(), file.data() + kOrdHeaderBytes,
                records.size() * sizeof(VtxDataTypes::CRRec));
    return records;
}

TEST(Salvage, UndamagedRecordingsConvertLikeTheReference) {
    for (const bool timestamps : {true, false}) {
        const std::string whole = BuildOrdFile(Header(timestamps), Packets(timestamps));
        EXPECT_TRUE(ConvertsLikeTheReference(whole, AllOutputs(), Salvage()));
        const std::string cut = whole.substr(0, whole.size() - 31);
        EXPECT_TRUE(ConvertsLikeTheReference(cut, AllOutputs(), Salvage()));
    }
}

// The one recording that the format's own rule refuses although nothing is damaged.
TEST(Salvage, LastSpanOfHalfTheBufferConvertsWhole) {
    std::string stream;
    for (const PacketPlan& plan : Packets(true)) {
        const std::string packet = EncodePacket(plan);
        if (stream.size() + packet.size() + 10 > 25'000) break;
        stream += packet;
    }
    const std::size_t cut = 25'000 - stream.size();  // of a last packet that lacks its end
    stream += EncodePacket(Packets(true)[0]).substr(0, cut);
    ASSERT_EQ(stream.size(), 25'000U);
    const std::string recording = Header(true).Block() + stream;
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, AllOutputs(), Salvage());
    EXPECT_EQ(run.statusText, L"Processing complete");
    EXPECT_GT(run.recordsProcessed, 10U);
}

TEST(Salvage, PacketsAfterDamageAreConvertedWithTheirOwnTimes) {
    const std::string recording = Damaged(true);
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, recording, AllOutputs(), Salvage());
    EXPECT_EQ(run.statusText, L"Processing complete");
    ASSERT_EQ(run.recordsProcessed, kPackets - 2);
    ASSERT_EQ(run.details.size(), 1U);
    EXPECT_EQ(run.details[0].kind, ConversionDetail::Kind::kLoss);
    EXPECT_NE(run.details[0].text.find(L"2 packets (0.0007 s) are lost"), std::wstring::npos)
        << std::string(run.details[0].text.begin(), run.details[0].text.end());

    // The same as two recordings, before and after: no record spans missing data.
    const auto plans = Packets(true);
    const std::vector<PacketPlan> before(plans.begin(), plans.begin() + kBeforeDamage - 1);
    const std::vector<PacketPlan> after(plans.begin() + kBeforeDamage + 1, plans.end());
    const auto expected = [](const std::vector<PacketPlan>& part) {
        const TempDirectory other;
        return RunReference(other, BuildOrdFile(Header(true), part), AllOutputs()).files;
    };
    auto files = expected(before);
    for (const auto& [name, bytes] : expected(after)) {
        files[name] += bytes.substr(kOrdHeaderBytes);
    }
    for (const auto& [name, bytes] : files) {
        if (name == "Events.vev") continue;  // whose first value produces no event in each part
        EXPECT_TRUE(
            SameBytes(run.files.at(name).substr(kOrdHeaderBytes), bytes.substr(kOrdHeaderBytes)))
            << name;
    }
}

TEST(Salvage, WithoutTimestampsTheTimeContinuesAndTheAccountSaysHowEarly) {
    const TempDirectory directory;
    const EngineRun run = RunEngine(directory, Damaged(false), AllOutputs(), Salvage());
    ASSERT_EQ(run.recordsProcessed, kPackets - kLost);
    ASSERT_EQ(run.details.size(), 1U);
    const std::wstring& text = run.details[0].text;
    EXPECT_NE(text.find(L"bytes were skipped, room for "), std::wstring::npos);
    EXPECT_NE(text.find(L"if all these bytes were packets, they are at least 0.00"),
              std::wstring::npos);
    EXPECT_NE(text.find(L" s early at the end"), std::wstring::npos);
    double samples = 0.0;
    for (const VtxDataTypes::CRRec& record : RecordsOf(run.files.at("CSC1.vcs"))) {
        EXPECT_NEAR(static_cast<double>(record.timestamp), samples * 1e6 / 30000, 1.0);
        samples += record.numValidSamples;
    }
    EXPECT_EQ(samples, 10.0 * (kPackets - kLost));
}

// Timestamps show that nothing is missing. Without them nobody knows, and no number is claimed.
TEST(Salvage, BytesThatWerePutBetweenPacketsAreNotCalledLostPackets) {
    for (const bool timestamps : {true, false}) {
        std::string stream;
        const std::vector<PacketPlan> plans = Packets(timestamps);
        for (std::size_t i = 0; i < plans.size(); ++i) {
            if (i == kBeforeDamage) stream += std::string(20'000, '\xEE');
            stream += EncodePacket(plans[i]);
        }
        const TempDirectory directory;
        const EngineRun run =
            RunEngine(directory, Header(timestamps).Block() + stream, AllOutputs(), Salvage());
        ASSERT_EQ(run.details.size(), 1U);
        const std::wstring& text = run.details[0].text;
        // The packet before such a place is not certain.
        const bool saysLost = text.find(L" lost") != std::wstring::npos;
        EXPECT_EQ(saysLost, timestamps) << std::string(text.begin(), text.end());
        if (!timestamps) continue;
        EXPECT_EQ(run.recordsProcessed, kPackets - 1);
        EXPECT_NE(text.find(L"1 packet (0.0003 s) is lost"), std::wstring::npos)
            << std::string(text.begin(), text.end());
    }
}

TEST(Salvage, ManyStretchesAreSummedUpFirstAndTheLinesAreFew) {
    std::vector<PacketPlan> plans = Packets(true);
    for (std::size_t i = 5; i < plans.size(); i += 10) plans[i].packetType = 5;
    const TempDirectory directory;
    const EngineRun run =
        RunEngine(directory, BuildOrdFile(Header(true), plans), AllOutputs(), Salvage());
    ASSERT_EQ(run.details.size(), 22U);
    EXPECT_NE(run.details.front().text.find(L"damaged in 30 places: in total "),
              std::wstring::npos);
    EXPECT_NE(run.details.front().text.find(L" 60 packets "), std::wstring::npos);
    EXPECT_NE(run.details.back().text.find(L"in 10 more places after these"), std::wstring::npos);
}

}  // namespace
}  // namespace stalwick::test
