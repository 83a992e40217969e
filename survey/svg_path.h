// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <string>

namespace stalwick {

// The data of an SVG path of straight lines, compact because it consists of steps between points in
// tenths of a pixel.
class SvgPath {
  public:
    void MoveTo(double x, double y);
    // Adds nothing if the point is less than a tenth of a pixel away from the previous one.
    void LineTo(double x, double y);

    [[nodiscard]] bool IsEmpty() const { return data_.empty(); }
    const std::string& Data() const { return data_; }

  private:
    void Append(std::int64_t tenths, bool first);
    void AppendStep(std::int64_t x, std::int64_t y, char command);

    std::string data_;
    char command_ = 0;    // the last one, which need not be repeated
    std::int64_t x_ = 0;  // of the last point, tenths
    std::int64_t y_ = 0;
};

}  // namespace stalwick
