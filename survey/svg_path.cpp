// SPDX-License-Identifier: BSD-3-Clause
#include "survey/svg_path.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace stalwick {

namespace {

std::int64_t Tenths(double value) {
    constexpr double kMost = 1e9;
    if (std::isnan(value)) return 0;
    return std::llround(std::clamp(value, -kMost, kMost) * 10.0);
}

}  // namespace

// A number needs no blank before it if its sign marks its beginning.
void SvgPath::Append(std::int64_t tenths, bool first) {
    if (tenths < 0) {
        data_ += '-';
        tenths = -tenths;
    } else if (!first) {
        data_ += ' ';
    }
    const std::int64_t whole = tenths / 10;
    const std::int64_t rest = tenths % 10;
    if (whole != 0 || rest == 0) {
        std::array<char, 24> digits;
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), whole).ptr;
        data_.append(digits.data(), end);
    }
    if (rest != 0) {
        data_ += '.';
        data_ += static_cast<char>('0' + rest);
    }
}

void SvgPath::AppendStep(std::int64_t x, std::int64_t y, char command) {
    const bool isNew = command_ != command;
    if (isNew) data_ += command;
    command_ = command;
    if (command != 'v') Append(x - x_, isNew);
    if (command != 'h') Append(y - y_, isNew && command == 'v');
    x_ = x;
    y_ = y;
}

void SvgPath::MoveTo(double x, double y) {
    command_ = 0;
    AppendStep(Tenths(x), Tenths(y), 'm');
    command_ = 0;  // each step after a move has its own letter
}

void SvgPath::LineTo(double x, double y) {
    const std::int64_t toX = Tenths(x);
    const std::int64_t toY = Tenths(y);
    if (toX == x_ && toY == y_) return;
    AppendStep(toX, toY, toX == x_ ? 'v' : toY == y_ ? 'h' : 'l');
}

}  // namespace stalwick
