// SPDX-License-Identifier: BSD-3-Clause
#include "cli/verify_lines.h"

#include <algorithm>

#include "page/readable_figures.h"

namespace stalwick {

namespace {

constexpr std::size_t kMostGapLines = 20;

std::wstring FindingLine(const OutputFinding& finding) {
    std::wstring line = finding.path + L": ";
    if (finding.record) {
        line += L"record " + std::to_wstring(*finding.record);
        if (finding.byte) line += L" at byte " + std::to_wstring(*finding.byte);
        line += L": ";
    } else if (finding.byte) {
        line += L"byte " + std::to_wstring(*finding.byte) + L": ";
    }
    return line + finding.text;
}

std::wstring GapLine(const OutputGap& gap) {
    return gap.path + L": a gap before record " + std::to_wstring(gap.record) + L" at byte " +
           std::to_wstring(gap.byte) + L": " + std::to_wstring(gap.seconds) + L" s, " +
           Counted(gap.missingSamples, L"sample") + L" a channel";
}

std::wstring SetLine(const VerifyReport& report, const VerifiedSet& set,
                     const std::wstring& recordingPath) {
    std::wstring line = report.directory + L": ";
    if (report.sets.size() > 1) line += L"set with " + set.names.front() + L": ";
    line += Counted(set.names.size(), L"file") + L", " + ReadableBytes(set.bytes);
    if (set.gapCount != 0) line += L", " + Counted(set.gapCount, L"gap");
    if (set.findingCount != 0) return line + L": " + Counted(set.findingCount, L"finding");
    return line + L": whole, " +
           (recordingPath.empty() ? L"not compared with the recording (--against)"
                                  : L"everything that " + recordingPath + L" gives");
}

}  // namespace

std::vector<std::wstring> ReportAsLines(const VerifyReport& report,
                                        const std::wstring& recordingPath) {
    std::vector<std::wstring> lines;
    for (const VerifiedSet& set : report.sets) {
        for (const OutputFinding& finding : set.findings) lines.push_back(FindingLine(finding));
        for (const auto& [path, count] : set.unlisted) {
            lines.push_back(path + L": " + Counted(count, L"further finding"));
        }
        const std::size_t listed = std::min(set.gaps.size(), kMostGapLines);
        for (std::size_t i = 0; i < listed; ++i) lines.push_back(GapLine(set.gaps[i]));
        if (const std::uint64_t more = set.gapCount - listed; more != 0) {
            lines.push_back(report.directory + L": " + Counted(more, L"further gap"));
        }
        lines.push_back(SetLine(report, set, recordingPath));
    }
    return lines;
}

}  // namespace stalwick
