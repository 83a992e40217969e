// SPDX-License-Identifier: BSD-3-Clause
#include "survey/svg_writer.h"

#include <utility>

#include "survey/svg_number.h"

namespace stalwick {

namespace {

std::string Rules(std::span<const SvgColour> colours, std::string SvgColour::*value) {
    std::string rules;
    for (const SvgColour& colour : colours) {
        rules += colour.selector + '{' + colour.property + ':' + colour.*value + "}\n";
    }
    return rules;
}

}  // namespace

std::string SvgColourRules(std::span<const SvgColour> colours) {
    return Rules(colours, &SvgColour::light) + "@media (prefers-color-scheme:dark){\n" +
           Rules(colours, &SvgColour::dark) + "}\n";
}

SvgWriter::SvgWriter(const SvgPicture& picture) : id_(EscapeXml(picture.id)) {
    const std::string width = SvgNumber(picture.width);
    const std::string height = SvgNumber(picture.height);
    text_ = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height +
            "\" viewBox=\"0 0 " + width + ' ' + height + "\"" +
            (picture.stretches ? " preserveAspectRatio=\"none\"" : "") +
            " role=\"img\" aria-labelledby=\"" + id_ + "-title " + id_ + "-desc\">\n<title id=\"" +
            id_ + "-title\">" + EscapeXml(picture.title) + "</title>\n<desc id=\"" + id_ +
            "-desc\">" + EscapeXml(picture.description) + "</desc>\n";
    if (!picture.style.empty()) text_ += "<style>\n" + EscapeXml(picture.style) + "</style>\n";
}

void SvgWriter::OpenTag(const std::string& name, const std::string& cssClass) {
    text_ += '<' + name;
    if (!cssClass.empty()) text_ += " class=\"" + EscapeXml(cssClass) + '"';
}

void SvgWriter::Attribute(const char* name, double value) {
    text_ += ' ';
    text_ += name;
    text_ += "=\"" + SvgNumber(value) + '"';
}

void SvgWriter::Box(const SvgRect& rect) {
    Attribute("x", rect.x);
    Attribute("y", rect.y);
    Attribute("width", rect.width);
    Attribute("height", rect.height);
}

void SvgWriter::CloseTag(const std::string& name, const std::string& title) {
    if (title.empty()) {
        text_ += "/>\n";
    } else {
        text_ += "><title>" + EscapeXml(title) + "</title></" + name + ">\n";
    }
}

void SvgWriter::OpenGroup(const std::string& cssClass) {
    OpenTag("g", cssClass);
    text_ += ">\n";
}

void SvgWriter::OpenClippedGroup(const std::string& cssClass, const SvgRect& rect) {
    const std::string id = id_ + "-clip" + std::to_string(++clips_);
    text_ += "<clipPath id=\"" + id + "\"><rect";
    Box(rect);
    text_ += "/></clipPath>\n";
    OpenTag("g", cssClass);
    text_ += " clip-path=\"url(#" + id + ")\">\n";
}

void SvgWriter::CloseGroup() {
    text_ += "</g>\n";
}

void SvgWriter::Line(const std::string& cssClass, SvgPoint from, SvgPoint to) {
    OpenTag("line", cssClass);
    Attribute("x1", from.x);
    Attribute("y1", from.y);
    Attribute("x2", to.x);
    Attribute("y2", to.y);
    text_ += "/>\n";
}

void SvgWriter::Rect(const std::string& cssClass, const SvgRect& rect, const std::string& title) {
    OpenTag("rect", cssClass);
    Box(rect);
    CloseTag("rect", title);
}

void SvgWriter::Path(const std::string& cssClass, const SvgPath& path, const std::string& title) {
    OpenTag("path", cssClass);
    text_ += " d=\"" + path.Data() + '"';
    CloseTag("path", title);
}

void SvgWriter::Text(const std::string& cssClass, SvgPoint at, const std::string& text,
                     SvgAnchor anchor) {
    OpenTag("text", cssClass);
    Attribute("x", at.x);
    Attribute("y", at.y);
    if (anchor == SvgAnchor::kMiddle) text_ += " text-anchor=\"middle\"";
    if (anchor == SvgAnchor::kEnd) text_ += " text-anchor=\"end\"";
    text_ += '>' + EscapeXml(text) + "</text>\n";
}

std::string SvgWriter::Finish() {
    text_ += "</svg>\n";
    return std::move(text_);
}

}  // namespace stalwick
