// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ord/packet_stream.h"

namespace stalwick {

// The stretches of a recording that its conversion left out, and how much was lost.
class SkippedStretches {
  public:
    // `atSeconds`: time in the recording, at the end of the last packet before the stretch.
    void Add(const StreamPart& stretch, double atSeconds);

    // The losses, one per line: first the sum if there are several, then each stretch up to a
    // limit, then the rest together. `packetSeconds` is the duration of a packet.
    [[nodiscard]] std::vector<std::wstring> Describe(double packetSeconds,
                                                     bool packetsCarryTimestamps) const;

  private:
    struct Loss {
        std::uint64_t bytes = 0;
        std::uint64_t lost = 0;  // packets, if timestamps show how many
        bool anyKnown = false;   // timestamps showed it for a stretch
        std::uint64_t room = 0;  // packets for which the other stretches had room, at least

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
