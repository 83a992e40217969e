// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

#include "ord/ord_data_packet.h"
#include "survey/recording_survey.h"

namespace stalwick {

enum class SurveyDepth {
    kWhole,
    kQuick  // the header and the packets at both ends; a pipe is still read completely
};

// A packet in a survey.
struct WatchedPacket {
    const ORDDataPacket& packet;
    std::uint64_t position = 0;  // bytes of the file
    double seconds = 0.0;        // of its first sample, from the recording's first
    bool follows = true;         // in time on the packet before
    std::uint64_t ttlEvents = 0;
    std::uint8_t ttlChanged = 0;  // a bit for each line that changed
};

// Takes part in a survey, so that no one needs to read the recording again to learn more.
class SurveyWatcher {
  public:
    SurveyWatcher() = default;
    SurveyWatcher(const SurveyWatcher&) = delete;
    SurveyWatcher& operator=(const SurveyWatcher&) = delete;
    virtual ~SurveyWatcher() = default;

    // Before the first packet; `fileSize` 0: unknown.
    virtual void Begin(const RecordingHeader& header, std::uint64_t fileSize) = 0;
    // Each packet; returning false ends the survey there.
    [[nodiscard]] virtual bool Take(const WatchedPacket& packet) = 0;
};

// Surveys a recording from its first byte to its last, also after damage. If it cannot be opened,
// or has no complete header, the survey contains only an error.
[[nodiscard]] RecordingSurvey SurveyRecording(const std::wstring& path,
                                              SurveyDepth depth = SurveyDepth::kWhole,
                                              SurveyWatcher* watcher = nullptr);

}  // namespace stalwick
