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

TEST(TableText, IsTheSameTableInHtml) {
  const std::string html = htmlText(table());
  EXPECT_NE(html.find("<meta charset=\"utf-8\">"), std::string::npos);
  EXPECT_NE(html.find("<table>\n"
                      "<tr><td>Line</td><td>0.500</td><td>mm</td><td></td><td></td><td></td>"
                      "<td></td><td>4x</td></tr>\n"
                      "<tr><td>Circle</td><td>1.000</td><td>mm</td><td>6.283</td><td>mm</td>"
                      "<td>314.159</td><td>mm^2</td><td>4x</td></tr>\n"
                      "<tr><td>Text</td><td>grain boundary</td><td></td><td></td><td></td>"
                      "<td></td><td></td><td>4x</td></tr>\n"
                      "</table>"),
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
