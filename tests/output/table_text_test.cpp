#include <gtest/gtest.h>

#include "output/TableText.h"

namespace tessary {
namespace {

MeasurementTable table() {
  return {{{"Line", {{"0.500", "mm"}}},
           {"Circle", {{"1.000", "mm"}, {"6.283", "mm"}, {"314.159", "mm^2"}}},
           {"Text", {}, "grain boundary"}},
          "4x"};
}

TEST(TableText, HasALineAShapeAndTheCalibrationInTheLastColumn) {
  EXPECT_EQ(tabSeparatedText(table()),
            "Line\t0.500\tmm\t\t\t\t\t4x\n"
            "Circle\t1.000\tmm\t6.283\tmm\t314.159\tmm^2\t4x\n"
            "Text\tgrain boundary\t\t\t\t\t\t4x\n");
}

/// With its value as it is read in every locale.
std::string numberCell(const std::string& number) {
  return "<td sdval=\"" + number + "\" sdnum=\"1033;0;0.000\">" + number + "</td>";
}

TEST(TableText, IsTheSameTableInHtml) {
  const std::string empty = "<td></td>";
  const std::string last = "<td>4x</td></tr>\n";
  const std::string html = htmlText(table());
  EXPECT_NE(html.find("<meta charset=\"utf-8\">"), std::string::npos);
  EXPECT_NE(html.find("<table>\n<tr><td>Line</td>" + numberCell("0.500") + "<td>mm</td>" + empty +
                      empty + empty + empty + last + "<tr><td>Circle</td>" + numberCell("1.000") +
                      "<td>mm</td>" + numberCell("6.283") + "<td>mm</td>" + numberCell("314.159") +
                      "<td>mm^2</td>" + last + "<tr><td>Text</td><td>grain boundary</td>" + empty +
                      empty + empty + empty + empty + last + "</table>"),
            std::string::npos)
      << html;
}

TEST(TableText, NoTextBreaksACell) {
  const MeasurementTable hostile{{{"Text", {}, "a\tb\r\nc"}, {"Text", {}, "\"d\" e\t\""}},
                                 "x\n<y>"};
  EXPECT_EQ(tabSeparatedText(hostile),
            "Text\ta b  c\t\t\t\t\t\tx <y>\n"
            "Text\t\"\"\"d\"\" e \"\"\"\t\t\t\t\t\tx <y>\n");
  EXPECT_NE(htmlText(hostile).find("<td>&quot;d&quot; e &quot;</td>"), std::string::npos);
  EXPECT_NE(htmlText(hostile).find("<td>x &lt;y&gt;</td>"), std::string::npos);
  EXPECT_EQ(tabSeparatedText({{{"Text", {}, "5\" tube"}}, ""}), "Text\t5\" tube\t\t\t\t\t\t\n")
      << "only the first sign of a cell begins a quotation";
}

TEST(TableText, OfNoShapesIsEmpty) { EXPECT_EQ(tabSeparatedText({}), ""); }

}  // namespace
}  // namespace tessary
