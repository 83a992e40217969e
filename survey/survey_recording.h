#pragma once

#include <string>

#include "ord/ord_data_packet.h"
#include "survey/recording_survey.h"

namespace stalwick {

enum class SurveyDepth {
    kWhole,
    kQuick  // the header and the packets at both ends; a pipe is read whole all the same
};

// A packet on its way through a survey.
struct WatchedPacket {
    const ORDDataPacket& packet;
    std::uint64_t position = 0;  // bytes of the file
    double seconds = 0.0;        // of its first sample, from the recording's first
    bool follows = true;         // in time on the packet before
    std::uint64_t ttlEvents = 0;
    std::uint8_t ttlChanged = 0;  // a bit for each line that changed
};

// Takes part in a survey, so that whoever wants more of a recording need not read it again.
class SurveyWatcher {
  public:
    SurveyWatcher() = default;
    SurveyWatcher(const SurveyWatcher&) = delete;
    SurveyWatcher& operator=(const SurveyWatcher&) = delete;
    virtual ~SurveyWatcher() = default;

    // Before the first packet; `fileSize` 0: not known.
    virtual void Begin(const RecordingHeader& header, std::uint64_t fileSize) = 0;
    // Each packet; false ends the survey there.
    [[nodiscard]] virtual bool Take(const WatchedPacket& packet) = 0;
};

// Looks at a recording from its first byte to its last, also beyond damage. What cannot be opened,
// or has no complete header, gives a survey with an error.
[[nodiscard]] RecordingSurvey SurveyRecording(const std::wstring& path,
                                              SurveyDepth depth = SurveyDepth::kWhole,
                                              SurveyWatcher* watcher = nullptr);

}  // namespace stalwick
