// SPDX-License-Identifier: BSD-3-Clause
#include "survey/svg_writer.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "survey/svg_number.h"

namespace stalwick::test {
namespace {

TEST(SvgNumber, HasTwoDecimalsAtMostAndNoCharacterTooMany) {
    EXPECT_EQ(SvgNumber(0.0), "0");
    EXPECT_EQ(SvgNumber(-0.001), "0");
    EXPECT_EQ(SvgNumber(3.0), "3");
    EXPECT_EQ(SvgNumber(1.5), "1.5");
    EXPECT_EQ(SvgNumber(-0.25), "-.25");
    EXPECT_EQ(SvgNumber(-12.049), "-12.05");
    EXPECT_EQ(SvgNumber(0.996), "1");
    EXPECT_EQ(SvgNumber(1000.07), "1000.07");
    EXPECT_EQ(SvgNumber(std::numeric_limits<double>::quiet_NaN()), "0");
    EXPECT_EQ(SvgNumber(std::numeric_limits<double>::infinity()), "1000000000");
}

TEST(SvgNumber, EscapesWhatXmlCannotHave) {
    EXPECT_EQ(EscapeXml("a<b>&\"c\""), "a&lt;b&gt;&amp;&quot;c&quot;");
    EXPECT_EQ(EscapeXml("\xC2\xB5V\t\n"), "\xC2\xB5V\t\n");
    EXPECT_EQ(EscapeXml(std::string("\0\x01\x7F", 3)), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(EscapeXml("\xEF\xBF\xBF."), "\xEF\xBF\xBD.");
    EXPECT_EQ(EscapeXml("a\xFF\xC2"), "a\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(EscapeXml("\xEF\xBB\xBF"), "\xEF\xBB\xBF");
}

TEST(SvgPath, IsWrittenInTenthsFromPointToPoint) {
    SvgPath path;
    EXPECT_TRUE(path.IsEmpty());
    path.MoveTo(10.0, 20.04);
    path.LineTo(10.04, 20.0);  // less than a tenth away
    path.LineTo(10.0, 17.5);
    path.LineTo(10.0, 18.0);
    path.LineTo(11.0, 18.0);
    path.LineTo(12.0, 17.7);
    path.LineTo(13.0, 18.7);
    path.MoveTo(20.0, 5.0);
    path.LineTo(19.9, 4.0);
    EXPECT_EQ(path.Data(), "m10 20v-2.5 .5h1l1-.3 1 1m7-13.7l-.1-1");
}

// Small errors of the steps must not add up.
TEST(SvgPath, StaysTrueOverManySteps) {
    SvgPath path;
    path.MoveTo(0.0, 0.0);
    for (int i = 1; i <= 1000; ++i) path.LineTo(i * 0.333, i * 0.333);
    path.LineTo(333.0, 0.0);
    EXPECT_EQ(path.Data().substr(path.Data().rfind('v')), "v-333");
}

TEST(SvgWriter, WritesAPictureThatScreenReadersRead) {
    SvgWriter writer({100.0, 50.5, "Two & three", "Longer", ".a{fill:red}\n", "p1"});
    writer.OpenGroup("traces \"x\"");
    writer.OpenClippedGroup("", {1.0, 2.0, 3.0, 4.0});
    writer.Line("grid", {0.0, 1.0}, {2.0, 3.25});
    writer.CloseGroup();
    writer.CloseGroup();
    writer.Rect("gap", {1.0, 2.0, 3.0, 4.0}, "1 < 2");
    SvgPath path;
    path.MoveTo(1.0, 1.0);
    path.LineTo(2.0, 3.0);
    writer.Path("trace", path);
    writer.Text("label", {5.0, 6.0}, "CSC<1>", SvgAnchor::kEnd);
    EXPECT_EQ(writer.Finish(),
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"100\" height=\"50.5\" "
              "viewBox=\"0 0 100 50.5\" role=\"img\" aria-labelledby=\"p1-title p1-desc\">\n"
              "<title id=\"p1-title\">Two &amp; three</title>\n"
              "<desc id=\"p1-desc\">Longer</desc>\n"
              "<style>\n.a{fill:red}\n</style>\n"
              "<g class=\"traces &quot;x&quot;\">\n"
              "<clipPath id=\"p1-clip1\"><rect x=\"1\" y=\"2\" width=\"3\" height=\"4\"/>"
              "</clipPath>\n"
              "<g clip-path=\"url(#p1-clip1)\">\n"
              "<line class=\"grid\" x1=\"0\" y1=\"1\" x2=\"2\" y2=\"3.25\"/>\n"
              "</g>\n</g>\n"
              "<rect class=\"gap\" x=\"1\" y=\"2\" width=\"3\" height=\"4\">"
              "<title>1 &lt; 2</title></rect>\n"
              "<path class=\"trace\" d=\"m1 1l1 2\"/>\n"
              "<text class=\"label\" x=\"5\" y=\"6\" text-anchor=\"end\">CSC&lt;1&gt;</text>\n"
              "</svg>\n");
}

TEST(SvgWriter, ColoursHaveALightAndADarkRule) {
    const std::array<SvgColour, 2> colours{
        {{".gap", "fill", "#eee", "#333"}, {"text", "fill", "#000", "#fff"}}};
    EXPECT_EQ(SvgColourRules(colours),
              ".gap{fill:#eee}\ntext{fill:#000}\n"
              "@media (prefers-color-scheme:dark){\n.gap{fill:#333}\ntext{fill:#fff}\n}\n");
}

}  // namespace
}  // namespace stalwick::test
