#pragma once
// The two forms in which a table of measurements goes into other programs. A row has always as many
// cells: the kind, then each value and its unit (or the words of a text), empty ones, and at the
// end the name of the calibration.

#include <string>

#include "base/MeasurementTable.h"

namespace tessary {

/// UTF-8, a line for each row, tabs between the cells. Tabs and line breaks in a cell become
/// blanks; one that begins with a quotation mark is quoted, or a spreadsheet would look for its
/// end.
std::string tabSeparatedText(const MeasurementTable& table);

/// A page (UTF-8) that holds the table and nothing else.
std::string htmlText(const MeasurementTable& table);

}  // namespace tessary
