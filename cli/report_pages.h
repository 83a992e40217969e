// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>
#include <vector>

#include "survey/recording_survey.h"

namespace CLI {
class App;
}

namespace stalwick {

struct ReportPageOptions {
    std::vector<std::string> files;
    std::string page;
};

void DeclareReport(CLI::App& app, ReportPageOptions& options);

// Makes the pages. Returns the exit status.
[[nodiscard]] int ShowReport(const ReportPageOptions& options);

}  // namespace stalwick
