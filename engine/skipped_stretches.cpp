// SPDX-License-Identifier: BSD-3-Clause
#include "engine/skipped_stretches.h"

#include "outputs/header_text.h"

namespace stalwick {

namespace {

constexpr std::size_t kMostDescribed = 20;

std::wstring Counted(std::uint64_t count, const std::wstring& what) {
    return std::to_wstring(count) + L' ' + what + (count == 1 ? L"" : L"s");
}

std::wstring Seconds(double seconds) {
    return FormatDouble(seconds, std::chars_format::fixed, 4) + L" s";
}

}  // namespace

void SkippedStretches::Loss::Add(const StreamPart& stretch) {
    bytes += stretch.size;
    if (stretch.packetsLostIsKnown) {
        lost += stretch.packetsLost;
        anyKnown = true;
    } else {
        room += stretch.packetsLost;
    }
}

void SkippedStretches::Add(const StreamPart& stretch, double atSeconds) {
    ++count_;
    all_.Add(stretch);
    if (described_.size() < kMostDescribed) {
        described_.push_back({stretch, atSeconds});
    } else {
        notDescribed_.Add(stretch);
    }
}

// "412 bytes were skipped, 2 packets (0.0007 s) are lost", or ", room for 2 packets (0.0007 s) or
// more": the bytes may never have been packets.
std::wstring SkippedStretches::Describe(const Loss& loss, double packetSeconds) {
    const auto packets = [&](std::uint64_t count) {
        return Counted(count, L"packet") + L" (" +
               Seconds(static_cast<double>(count) * packetSeconds) + L")";
    };
    std::wstring text =
        Counted(loss.bytes, L"byte") + (loss.bytes == 1 ? L" was" : L" were") + L" skipped";
    if (loss.anyKnown)
        text += L", " + packets(loss.lost) + (loss.lost == 1 ? L" is" : L" are") + L" lost";
    if (loss.room == 0) return text;
    return text + (loss.anyKnown ? L", others had room for " : L", room for ") +
           packets(loss.room) + L" or more";
}

std::vector<std::wstring> SkippedStretches::Describe(double packetSeconds,
                                                     bool packetsCarryTimestamps) const {
    std::vector<std::wstring> lines;
    if (count_ == 0) return lines;
    const std::wstring early = packetsCarryTimestamps
                                   ? L""
                                   : L"; without timestamps, times continue as if nothing were "
                                     L"missing: if all these bytes "
                                     L"were packets, they are at least " +
                                         Seconds(static_cast<double>(all_.room) * packetSeconds) +
                                         L" early at the end";
    const std::wstring advice = early + L"; look for a whole copy";
    if (count_ > 1) {
        lines.push_back(L"damaged in " + std::to_wstring(count_) + L" places: in total " +
                        Describe(all_, packetSeconds) + advice);
    }
    for (const auto& [part, atSeconds] : described_) {
        Loss loss;
        loss.Add(part);
        lines.push_back(L"damaged from byte " + std::to_wstring(part.position) + L" on, after " +
                        Seconds(atSeconds) + L": " + Describe(loss, packetSeconds) +
                        (count_ > 1 ? L"" : advice));
    }
    if (count_ > described_.size()) {
        lines.push_back(L"damaged in " + std::to_wstring(count_ - described_.size()) +
                        L" more places after these: " + Describe(notDescribed_, packetSeconds));
    }
    return lines;
}

}  // namespace stalwick
