#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ord/packet_stream.h"

namespace stalwick {

// The stretches of a recording that its conversion left out, and what that comes to.
class SkippedStretches {
  public:
    // `atSeconds`: of the recording, the end of what stands before the stretch.
    void Add(const StreamPart& stretch, double atSeconds);

    // What was lost, a line each: first the sum if there are several, then each stretch up to a
    // limit, then the rest together. `packetSeconds` is what a packet spans.
    [[nodiscard]] std::vector<std::wstring> Describe(double packetSeconds,
                                                     bool packetsCarryTimestamps) const;

  private:
    struct Loss {
        std::uint64_t bytes = 0;
        std::uint64_t lost = 0;  // packets, where timestamps tell
        bool anyKnown = false;   // they told of a stretch
        std::uint64_t room = 0;  // packets that the other stretches had room for, at least

        void Add(const StreamPart& stretch);
    };
    struct Stretch {
        StreamPart part;
        double atSeconds = 0.0;
    };
    static std::wstring Describe(const Loss& loss, double packetSeconds);

    std::vector<Stretch> described_;  // the first ones
    std::uint64_t count_ = 0;
    Loss all_;
    Loss notDescribed_;
};

}  // namespace stalwick
