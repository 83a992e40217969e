// SPDX-License-Identifier: BSD-3-Clause
#include "tools/ord_synth/recording_synth.h"

#include <string>
#include <vector>

#include "tools/ord_synth/damage.h"
#include "tools/ord_synth/packet_encoder.h"
#include "tools/ord_synth/packet_source.h"
#include "tools/ord_synth/recording_header.h"
#include "tools/ord_synth/span_tracker.h"

namespace stalwick {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

// Gathers packets into blocks for the sink.
class BlockBuffer {
  public:
    BlockBuffer(const ByteSink& sink, std::size_t maxPacketBytes)
        : sink_(sink), buffer_(kBlockBytes + maxPacketBytes) {}

    std::uint8_t* Free() { return buffer_.data() + used_; }

    bool Commit(std::size_t bytes) {
        used_ += bytes;
        return used_ < kBlockBytes || Flush();
    }

    bool Flush() {
        const std::size_t bytes = used_;
        used_ = 0;
        return bytes == 0 || sink_({buffer_.data(), bytes});
    }

  private:
    const ByteSink& sink_;
    std::vector<std::uint8_t> buffer_;
    std::size_t used_ = 0;
};

bool WriteHeader(const SynthOptions& options, const ByteSink& sink, SynthSummary& summary) {
    const std::string header = MakeRecordingHeader(options);
    summary.bytes += header.size();
    return sink({reinterpret_cast<const std::uint8_t*>(header.data()), header.size()});
}

}  // namespace

namespace {

SynthSummary MakeUndamaged(const SynthOptions& options, const ByteSink& sink) {
    SynthSummary summary;
    if (!WriteHeader(options, sink, summary)) return summary;
    PacketSource source(options);
    PacketEncoder encoder(options);
    BlockBuffer buffer(sink, encoder.MaxPacketBytes());
    SpanTracker spans;
    SynthPacket packet;
    // A reader would refuse a stream whose last span is half its buffer: such a stream gets one
    // more packet.
    while (source.NextPacketNumber() < options.packetCount || spans.EndsInRefusedSpan()) {
        source.Next(packet);
        const std::size_t bytes = encoder.Encode(packet, buffer.Free());
        spans.AddPacket(bytes);
        summary.bytes += bytes;
        ++summary.packets;
        if (!buffer.Commit(bytes)) return summary;
    }
    summary.samples = summary.packets * kSynthSamplesPerPacket * encoder.EnabledChannels();
    summary.widthCounts = encoder.WidthCounts();
    summary.complete = buffer.Flush();
    return summary;
}

}  // namespace

SynthSummary MakeRecording(const SynthOptions& options, const ByteSink& sink) {
    if (options.damage.empty()) return MakeUndamaged(options, sink);
    DamagingSink damaging(sink, options.damage, options.seed);
    SynthSummary summary =
        MakeUndamaged(options, [&](std::span<const std::uint8_t> b) { return damaging.Take(b); });
    summary.damageMet = damaging.MetAll();
    return summary;
}

}  // namespace stalwick
