// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace stalwick {

// The options of `stalwick-inspect plot`.
struct PlotOptions {
    std::vector<std::string> files;
    std::string picture;
    std::string start = "0";  // seconds
    std::string seconds;      // empty: to the end
    std::string channels;     // empty: all
    std::string spacing;      // microvolts; empty: chosen from the traces
};

void DeclarePlot(CLI::App& app, PlotOptions& options);

// Draws the picture. Returns the exit status.
[[nodiscard]] int ShowPlot(const PlotOptions& options);

}  // namespace stalwick
