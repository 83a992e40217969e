// SPDX-License-Identifier: BSD-3-Clause

// The outputs of conversions that skip damage, compared with those of the same recording before it
// was damaged.

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "outputs/raw_record.h"
#include "outputs/vtx_data_types.h"
#include "platform/paths.h"
#include "tests/support/damaged_recording.h"
#include "tests/support/engine_run.h"

namespace stalwick::test {
namespace {

constexpr std::size_t kChannels = 32;
constexpr std::size_t kSamples = 10;  // of a channel in a packet
constexpr std::size_t kRawRecordBytes = (kChannels + 18) * 4;
constexpr std::uint64_t kRecordings = 8;  // of each version
constexpr std::size_t kNone = SIZE_MAX;

std::uint32_t WordAt(std::string_view bytes, std::size_t word) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data() + word * 4, 4);
    return value;
}

/** What one conversion left. */
struct Converted {
    std::map<std::string, std::string> files;
    std::vector<DamagedStretch> skipped;

    /** Of a channel: its samples one after another, and the number of the first one of each record.
     */
    struct Channel {
        std::vector<std::int16_t> samples;
        std::vector<std::size_t> starts;
        std::vector<std::uint64_t> times;
    };
    Channel ChannelOf(std::size_t number) const {
        Channel channel;
        const std::string& file = files.at("CSC" + std::to_string(number) + ".vcs");
        for (std::size_t at = kOrdHeaderBytes; at < file.size();
             at += sizeof(VtxDataTypes::CRRec)) {
            VtxDataTypes::CRRec record;
            std::memcpy(&record, file.data() + at, sizeof record);
            channel.starts.push_back(channel.samples.size());
            channel.times.push_back(record.timestamp);
            channel.samples.insert(channel.samples.end(), record.samples.begin(),
                                   record.samples.begin() + record.numValidSamples);
        }
        return channel;
    }

    std::size_t Packets() const { return Raw().size() / (kSamples * kRawRecordBytes); }
    std::string_view Raw() const {
        return std::string_view(files.at("RawData.vrd")).substr(kOrdHeaderBytes);
    }
    /** The raw records of a packet; without the times and checksums if they do not count. */
    std::string RawRecordsOf(std::size_t packet, bool withTimes) const {
        std::string records(
            Raw().substr(packet * kSamples * kRawRecordBytes, kSamples * kRawRecordBytes));
        for (std::size_t i = 0; i < kSamples && !withTimes; ++i) {
            char* const record = records.data() + i * kRawRecordBytes;
            std::memset(record + kRawTimestampHighWord * 4, 0, 4);
            std::memset(record + kRawTimestampLowWord * 4, 0, 4);
            std::memset(record + kRawRecordBytes - 4, 0, 4);
        }
        return records;
    }
    /** Microseconds, of the packet's first sample. */
    std::uint64_t TimeOf(std::size_t packet) const {
        const std::string_view first = Raw().substr(packet * kSamples * kRawRecordBytes);
        return std::uint64_t{WordAt(first, kRawTimestampHighWord)} << 32U |
               WordAt(first, kRawTimestampLowWord);
    }
};

Converted Convert(const std::string& recording, OnDamage onDamage) {
    OutputSettings settings = QuickSettings();
    settings.onDamage = onDamage;
    DataProcessor processor(settings);
    processor.FollowTime(true);
    const TempDirectory directory;
    std::wstring status;
    RunConversionJob(MakeJob(directory, {PutRecording(directory, recording)},
                             {true, false, false, false, true, true}, processor, status));
    EXPECT_EQ(status, L"Processing complete");
    return {FilesIn(directory.Path(L"out") + kPathSeparator + L"rec"),
            processor.LastAccount().skipped};
}

/** An undamaged packet of a damaged recording. */
struct IntactPacket {
    std::size_t index;     // in the whole recording
    std::size_t position;  // in the damaged one
};

std::vector<IntactPacket> IntactPackets(const WholeRecording& whole,
                                        const DamagedRecording& damaged) {
    std::vector<IntactPacket> packets;
    for (std::size_t at = kOrdHeaderBytes; at < damaged.bytes.size(); ++at) {
        if (damaged.source[at] == DamagedRecording::kNew) continue;
        const std::int64_t found = whole.PacketAt(damaged.source[at]);
        if (found < 0) continue;
        const auto index = static_cast<std::size_t>(found);
        const std::size_t size = whole.positions[index + 1] - whole.positions[index];
        if (damaged.IsIntact(at, size) &&
            damaged.moved.begin() + static_cast<std::ptrdiff_t>(at + size) ==
                std::find(damaged.moved.begin() + static_cast<std::ptrdiff_t>(at),
                          damaged.moved.begin() + static_cast<std::ptrdiff_t>(at + size), 1)) {
            packets.push_back({index, at});
        }
    }
    return packets;
}

bool WasSkipped(const IntactPacket& packet, const std::vector<DamagedStretch>& skipped) {
    return std::any_of(skipped.begin(), skipped.end(), [&](const DamagedStretch& stretch) {
        return packet.position >= stretch.position &&
               packet.position < stretch.position + stretch.bytes;
    });
}

class SalvageRecovery : public testing::TestWithParam<bool> {
  protected:
    /** For each packet of the outputs, which one of the whole recording it is; kNone: not known. */
    std::vector<std::size_t> Match(const std::vector<IntactPacket>& expected,
                                   const Converted& before, const Converted& after) {
        std::vector<std::size_t> matches(after.Packets(), kNone);
        std::size_t next = 0;
        for (const IntactPacket& packet : expected) {
            const std::string wanted = before.RawRecordsOf(packet.index, timestamps_);
            while (next < matches.size() && after.RawRecordsOf(next, timestamps_) != wanted) ++next;
            if (next == matches.size()) {
                ADD_FAILURE() << "packet " << packet.index << " at byte " << packet.position
                              << " is not in the raw data file";
                return matches;
            }
            matches[next++] = packet.index;
        }
        return matches;
    }

    void CheckChannel(std::size_t number, const std::vector<std::size_t>& matches,
                      const Converted& before, const Converted& after) {
        const Converted::Channel whole = before.ChannelOf(number);
        const Converted::Channel left = after.ChannelOf(number);
        ASSERT_EQ(left.samples.size(), matches.size() * kSamples);
        for (std::size_t i = 0; i < matches.size(); ++i) {
            if (matches[i] == kNone) continue;
            ASSERT_EQ(std::memcmp(left.samples.data() + i * kSamples,
                                  whole.samples.data() + matches[i] * kSamples, kSamples * 2),
                      0)
                << "CSC" << number << ", packet " << matches[i];
        }
        for (std::size_t i = 0; i < left.starts.size() && timestamps_; ++i) {
            const std::size_t packet = left.starts[i] / kSamples;
            if (packet >= matches.size() || matches[packet] == kNone) continue;
            const auto time = static_cast<std::int64_t>(before.TimeOf(matches[packet]));
            ASSERT_NEAR(static_cast<double>(static_cast<std::int64_t>(left.times[i]) - time), 150,
                        190)
                << "record " << i << " of CSC" << number;
        }
    }

    const bool timestamps_ = GetParam();
};

TEST_P(SalvageRecovery, EveryWholePacketOutsideSkippedStretchesIsInTheOutputs) {
    const WholeRecording whole = MakeWholeRecording(7, {timestamps_, 0, {}, 1000});
    const Converted before = Convert(whole.bytes, OnDamage::kStop);
    ASSERT_EQ(before.Packets(), whole.packets.size());
    std::size_t undamaged = 0;
    std::size_t kept = 0;
    for (std::uint64_t number = 0; number < kRecordings; ++number) {
        std::mt19937_64 random(number);
        DamagedRecording damaged(whole);
        for (std::uint64_t place = 1 + number % 6; place > 0; --place) {
            DamageOnePlace(damaged, random);
        }
        const Converted after = Convert(damaged.bytes, OnDamage::kSkip);
        std::vector<IntactPacket> packets = IntactPackets(whole, damaged);
        undamaged += packets.size();
        std::erase_if(packets,
                      [&](const auto& packet) { return WasSkipped(packet, after.skipped); });
        kept += packets.size();
        SCOPED_TRACE("recording " + std::to_string(number));
        const std::vector<std::size_t> matches = Match(packets, before, after);
        for (std::size_t channel = 1; channel <= kChannels; channel += 5) {
            ASSERT_NO_FATAL_FAILURE(CheckChannel(channel, matches, before, after));
        }
    }
    EXPECT_GT(static_cast<double>(kept), 0.98 * static_cast<double>(undamaged));
}

INSTANTIATE_TEST_SUITE_P(All, SalvageRecovery, testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "WithTimestamps" : "WithoutTimestamps");
});

}  // namespace
}  // namespace stalwick::test
