// SPDX-License-Identifier: BSD-3-Clause
#include "survey/page_survey.h"

#include "survey/survey_recording.h"

namespace stalwick {

namespace {

class PageCollector : public SurveyWatcher {
  public:
    explicit PageCollector(const std::atomic<std::uint8_t>* cancel) : cancel_(cancel) {}

    void Begin(const RecordingHeader& header, std::uint64_t fileSize) override {
        spectra_.Begin(header, fileSize);
        traces_.Begin(header, fileSize);
    }
    bool Take(const WatchedPacket& watched) override {
        spectra_.Take(watched);
        traces_.Take(watched);
        activity_.Take(watched);
        return cancel_ == nullptr || cancel_->load(std::memory_order_relaxed) == 0;
    }
    void Finish(PageSurvey& page) {
        page.spectra = spectra_.Finish();
        page.traces = traces_.Finish();
        page.activity = activity_.Activity();
        page.events = activity_.Events();
    }

  private:
    const std::atomic<std::uint8_t>* cancel_;  // or null
    SpectrumCollector spectra_;
    TraceCollector traces_;
    ActivityCollector activity_;
};

}  // namespace

PageSurvey SurveyForPage(const std::wstring& path, const std::atomic<std::uint8_t>* cancel) {
    PageSurvey page;
    PageCollector collector(cancel);
    page.survey = SurveyRecording(path, SurveyDepth::kWhole, &collector);
    page.canceled = cancel != nullptr && cancel->load(std::memory_order_relaxed) != 0;
    if (!page.survey.error.empty() || page.canceled) return page;
    collector.Finish(page);
    page.verdict = JudgeSignal(page.survey, page.rules);
    return page;
}

}  // namespace stalwick
