// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <span>
#include <string>

#include "survey/svg_path.h"

namespace stalwick {

// Pixels of a picture, from its upper left corner.
struct SvgPoint {
    double x = 0.0;
    double y = 0.0;
};
struct SvgRect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
};

enum class SvgAnchor { kStart, kMiddle, kEnd };

// The look of one selector on a light and on a dark background.
struct SvgColour {
    std::string selector;  // ".gap"
    std::string property;  // "fill"
    std::string light;
    std::string dark;
};

// Style rules for these colours: the light ones, and the dark ones for those who prefer them.
[[nodiscard]] std::string SvgColourRules(std::span<const SvgColour> colours);

struct SvgPicture {
    double width = 0.0;  // pixels
    double height = 0.0;
    std::string title;           // for screen readers
    std::string description;     // the same, in more words
    std::string style;           // CSS
    std::string id = "picture";  // prefix of its ids, for several pictures on a page
    bool stretches = false;      // its shapes fill any space; it should have no text
};

// Writes a picture as SVG, one shape at a time. Text is UTF-8 and need not be escaped. A class may
// be several, separated by blanks. A shape with a title shows it under the pointer.
class SvgWriter {
  public:
    explicit SvgWriter(const SvgPicture& picture);

    void OpenGroup(const std::string& cssClass);
    // Nothing of the group is visible outside the rectangle.
    void OpenClippedGroup(const std::string& cssClass, const SvgRect& rect);
    void CloseGroup();

    void Line(const std::string& cssClass, SvgPoint from, SvgPoint to);
    void Rect(const std::string& cssClass, const SvgRect& rect, const std::string& title = {});
    void Path(const std::string& cssClass, const SvgPath& path, const std::string& title = {});
    void Text(const std::string& cssClass, SvgPoint at, const std::string& text,
              SvgAnchor anchor = SvgAnchor::kStart);

    // The whole picture, an <svg> element; call it once, with every group closed.
    [[nodiscard]] std::string Finish();

  private:
    void OpenTag(const std::string& name, const std::string& cssClass);
    void Attribute(const char* name, double value);
    void Box(const SvgRect& rect);
    void CloseTag(const std::string& name, const std::string& title);

    std::string text_;
    std::string id_;
    int clips_ = 0;
};

}  // namespace stalwick
