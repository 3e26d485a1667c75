#include "output/TableText.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "output/Markup.h"

namespace tessary {
namespace {

struct Cell {
  std::string_view text;
  bool isNumber = false;
};
using Cells = std::array<Cell, 2 + 2 * MeasurementTable::kMostValues>;

/// What LibreOffice has a number from, whatever its locale: where a point parts thousands, "0.500"
/// alone would be taken for five hundred. As it is written in English (1033), with three decimals.
constexpr std::string_view kNumberFormat = "\" sdnum=\"1033;0;0.000\">";

/// Borrows the table's texts.
Cells cellsOf(const MeasurementTable::Row& row, std::string_view calibration) {
  Cells cells;
  cells.front() = {row.kind};
  cells.back() = {calibration};
  cells[1] = {row.text};
  size_t next = 1;
  for (const MeasurementTable::Value& value : row.values) {
    cells[next++] = {value.number, true};
    cells[next++] = {value.unit};
  }
  return cells;
}

std::string tabSeparatedCell(std::string_view text) {
  std::string cell;
  const bool quoted = text.starts_with('"');
  if (quoted) cell += '"';
  for (const char character : text) {
    const bool breaks = character == '\t' || character == '\n' || character == '\r';
    cell += breaks ? ' ' : character;
    if (quoted && character == '"') cell += '"';
  }
  if (quoted) cell += '"';
  return cell;
}

}  // namespace

std::string tabSeparatedText(const MeasurementTable& table) {
  std::string text;
  for (const MeasurementTable::Row& row : table.rows) {
    const Cells cells = cellsOf(row, table.calibration);
    for (const Cell& cell : cells) text.append(tabSeparatedCell(cell.text)).append("\t");
    text.back() = '\n';
  }
  return text;
}

std::string htmlText(const MeasurementTable& table) {
  std::string html = "<!DOCTYPE html><html><head><meta charset=\"utf-8\"></head><body><table>\n";
  for (const MeasurementTable::Row& row : table.rows) {
    html += "<tr>";
    for (const auto& [text, isNumber] : cellsOf(row, table.calibration)) {
      html += "<td";
      if (isNumber)
        html.append(" sdval=\"").append(text).append(kNumberFormat);
      else
        html += ">";
      html.append(markupText(text)).append("</td>");
    }
    html += "</tr>\n";
  }
  return html + "</table></body></html>\n";
}

}  // namespace tessary
