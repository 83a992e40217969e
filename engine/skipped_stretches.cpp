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
    packets += stretch.packetsLost;
    isKnown = isKnown && stretch.packetsLostIsKnown;
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

// "412 bytes were skipped, at least 2 packets (0.0007 s) are lost".
std::wstring SkippedStretches::Describe(const Loss& loss, double packetSeconds) {
    return Counted(loss.bytes, L"byte") + (loss.bytes == 1 ? L" was" : L" were") + L" skipped, " +
           (loss.isKnown ? L"" : L"at least ") + Counted(loss.packets, L"packet") + L" (" +
           Seconds(static_cast<double>(loss.packets) * packetSeconds) + L")" +
           (loss.packets == 1 ? L" is" : L" are") + L" lost";
}

std::vector<std::wstring> SkippedStretches::Describe(double packetSeconds,
                                                     bool packetsCarryTimestamps) const {
    std::vector<std::wstring> lines;
    if (count_ == 0) return lines;
    const std::wstring early =
        packetsCarryTimestamps
            ? L""
            : L"; without timestamps the time went on as if nothing were missing and is at "
              L"least " +
                  Seconds(static_cast<double>(all_.packets) * packetSeconds) + L" early at the end";
    const std::wstring advice = early + L"; look for a whole copy";
    if (count_ > 1) {
        lines.push_back(L"damaged in " + std::to_wstring(count_) + L" places: in all " +
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
