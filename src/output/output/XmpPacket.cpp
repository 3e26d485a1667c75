#include "output/XmpPacket.h"

#include <cstdlib>
#include <string_view>

#include <fmt/format.h>

#include "base/Version.h"
#include "output/Markup.h"

namespace tessary {
namespace {

constexpr size_t kLongestText = 1000;

constexpr std::string_view kStart =
    "<?xpacket begin=\"\uFEFF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
    "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
    "<rdf:Description rdf:about=\"\" xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\""
    " xmlns:tiff=\"http://ns.adobe.com/tiff/1.0/\" xmlns:exif=\"http://ns.adobe.com/exif/1.0/\""
    " xmlns:tessary=\"https://tessary.example/ns/1.0/\">\n";
constexpr std::string_view kEnd =
    "</rdf:Description>\n</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"w\"?>";
constexpr std::string_view kRowsStart = "<tessary:Measurements><rdf:Seq>\n";
constexpr std::string_view kRowsEnd = "</rdf:Seq></tessary:Measurements>\n";

std::string element(std::string_view name, std::string_view text) {
  return fmt::format("<{0}>{1}</{0}>\n", name, markupText(shortened(text, kLongestText)));
}

/// As ISO 8601 has it, with its distance from UTC.
std::string timeText(const CalendarTime& time) {
  const int32_t minutes = std::abs(time.utcOffset) / 60;
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}{}{:02}:{:02}", time.year, time.month,
                     time.day, time.hour, time.minute, time.second, time.utcOffset < 0 ? '-' : '+',
                     minutes / 60, minutes % 60);
}

std::string calibrationText(const StillInfo& info) {
  if (!(info.pixelsPerUnit > 0)) return {};
  return "<tessary:Calibration rdf:parseType=\"Resource\">\n" +
         element("tessary:PixelsPerUnit", fmt::format("{}", info.pixelsPerUnit)) +
         element("tessary:Unit", info.unit) + element("tessary:Name", info.table.calibration) +
         "</tessary:Calibration>\n";
}

std::string rowText(const MeasurementTable::Row& row) {
  std::string text = "<rdf:li rdf:parseType=\"Resource\">\n" + element("tessary:Kind", row.kind);
  if (!row.text.empty()) text += element("tessary:Text", row.text);
  if (!row.values.empty()) {
    text += "<tessary:Values><rdf:Seq>\n";
    for (const MeasurementTable::Value& value : row.values) {
      text += "<rdf:li rdf:parseType=\"Resource\">\n" + element("tessary:Value", value.number) +
              element("tessary:Unit", value.unit) + "</rdf:li>\n";
    }
    text += "</rdf:Seq></tessary:Values>\n";
  }
  return text + "</rdf:li>\n";
}

std::string leftOutText(size_t count) {
  return count == 0 ? std::string()
                    : element("tessary:MeasurementsLeftOut", fmt::format("{}", count));
}

/// The rows that fit into `room`, and how many don't.
std::string tableText(const MeasurementTable& table, size_t room) {
  const size_t count = table.rows.size();
  std::string rows;
  size_t fitting = 0;
  for (const MeasurementTable::Row& row : table.rows) {
    const std::string text = rowText(row);
    const size_t all = kRowsStart.size() + rows.size() + text.size() + kRowsEnd.size();
    // Room for the word about the rest is kept until the last one is in.
    const size_t rest = fitting + 1 < count ? leftOutText(count).size() : 0;
    if (all + rest > room) break;
    rows += text;
    ++fitting;
  }
  std::string result;
  if (fitting > 0) result.append(kRowsStart).append(rows).append(kRowsEnd);
  return result + leftOutText(count - fitting);
}

}  // namespace

std::string xmpPacket(const StillInfo& info, TextureSize size, size_t room) {
  std::string packet(kStart);
  packet += element("xmp:CreatorTool", fmt::format("Tessary {}", version()));
  packet += element("xmp:CreateDate", timeText(info.time));
  if (!info.camera.empty()) packet += element("tiff:Model", info.camera);
  packet += element("tiff:ImageWidth", fmt::format("{}", size.width));
  packet += element("tiff:ImageLength", fmt::format("{}", size.height));
  packet += element("exif:PixelXDimension", fmt::format("{}", size.width));
  packet += element("exif:PixelYDimension", fmt::format("{}", size.height));
  packet += calibrationText(info);
  const size_t taken = packet.size() + kEnd.size();
  if (taken <= room) packet += tableText(info.table, room - taken);
  packet += kEnd;
  return packet.size() <= room ? packet : std::string();
}

std::vector<uint8_t> encodedStill(ImageEncoder& encoder, const PixelBuffer& picture,
                                  const StillInfo& info) {
  return encoder.encode(picture, xmpPacket(info, picture.size(), encoder.xmpRoom()));
}

}  // namespace tessary
