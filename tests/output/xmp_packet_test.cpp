#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Version.h"
#include "output/XmpPacket.h"

namespace tessary {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr TextureSize kSize{1280, 720};
constexpr size_t kRoom = 65502;

StillInfo info() {
  return {{2025, 1, 15, 9, 30, 5, 0},
          "Scope <55> & Co",
          1706.5F,
          "\u03BCm",
          {{{"Rectangle", {{"0.500", "\u03BCm"}, {"0.250", "\u03BCm"}, {"0.125", "\u03BCm^2"}}},
            {"Text", {}, "a > b"}},
           "lens, 4x"}};
}

/// How often `part` occurs.
size_t count(const std::string& text, const std::string& part) {
  size_t found = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
  return found;
}

TEST(XmpPacket, SaysWhereAStillComesFromAndWhatIsMeasuredOnIt) {
  const std::string packet = xmpPacket(info(), kSize, kRoom);
  EXPECT_THAT(packet, StartsWith("<?xpacket begin=\"\uFEFF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>"));
  EXPECT_THAT(packet, EndsWith("<?xpacket end=\"w\"?>"));
  for (const std::string& part :
       {fmt::format("<xmp:CreatorTool>Tessary {}<", version()),
        std::string("<xmp:CreateDate>2025-01-15T09:30:05+00:00<"),
        std::string("<tiff:Model>Scope &lt;55&gt; &amp; Co<"),
        std::string("<tiff:ImageWidth>1280<"), std::string("<tiff:ImageLength>720<"),
        std::string("<exif:PixelXDimension>1280<"), std::string("<exif:PixelYDimension>720<"),
        std::string("<tessary:PixelsPerUnit>1706.5<"), std::string("<tessary:Name>lens, 4x<"),
        std::string("<tessary:Kind>Rectangle<"),
        std::string("<tessary:Value>0.125</tessary:Value>\n<tessary:Unit>\u03BCm^2<"),
        std::string("<tessary:Text>a &gt; b<")})
    EXPECT_THAT(packet, HasSubstr(part));
  EXPECT_EQ(count(packet, "<tessary:Value>"), 3U);
  EXPECT_THAT(packet, Not(HasSubstr("LeftOut")));
  EXPECT_THAT(packet, Not(HasSubstr("Resolution>")));
}

TEST(XmpPacket, TellsTheTimeWithItsZone) {
  const struct {
    int32_t utcOffset;
    const char* text;
  } rows[] = {{3600, "T09:30:05+01:00<"},
              {-8 * 3600, "T09:30:05-08:00<"},
              {5 * 3600 + 45 * 60, "T09:30:05+05:45<"},
              {-(3 * 3600 + 30 * 60), "T09:30:05-03:30<"}};
  for (const auto& row : rows) {
    StillInfo there = info();
    there.time.utcOffset = row.utcOffset;
    EXPECT_THAT(xmpPacket(there, kSize, kRoom), HasSubstr(row.text));
  }
}

TEST(XmpPacket, SaysNothingOfWhatIsNotThere) {
  StillInfo bare = info();
  bare.camera.clear();
  bare.pixelsPerUnit = -1.0F;
  bare.table = {};
  const std::string packet = xmpPacket(bare, kSize, kRoom);
  EXPECT_THAT(packet, Not(HasSubstr("tiff:Model")));
  EXPECT_THAT(packet, Not(HasSubstr("<tessary:")));
  bare.pixelsPerUnit = 0.0F;
  EXPECT_EQ(xmpPacket(bare, kSize, kRoom), packet);
}

TEST(XmpPacket, LeavesOutTheLastRowsThatDoNotFitAndSaysHowMany) {
  StillInfo many = info();
  const std::string empty = xmpPacket(
      {many.time, many.camera, many.pixelsPerUnit, many.unit, {{}, "lens, 4x"}}, kSize, kRoom);
  many.table.rows.assign(1000, {"Line", {{"0.500", "mm"}}});
  const std::string whole = xmpPacket(many, kSize, 10'000'000);
  ASSERT_EQ(count(whole, "<tessary:Kind>"), 1000U);
  EXPECT_EQ(xmpPacket(many, kSize, whole.size()), whole);
  for (const size_t room : {whole.size() - 1, kRoom, empty.size() + 400, empty.size() + 80}) {
    const std::string packet = xmpPacket(many, kSize, room);
    ASSERT_LE(packet.size(), room);
    EXPECT_GT(packet.size() + 250, room) << "no more is left out than has to be";
    const size_t kept = count(packet, "<tessary:Kind>");
    EXPECT_THAT(packet, HasSubstr(fmt::format("<tessary:MeasurementsLeftOut>{}<", 1000 - kept)));
    EXPECT_EQ(count(packet, "<rdf:li"), count(packet, "</rdf:li>"));
    EXPECT_THAT(packet, EndsWith("<?xpacket end=\"w\"?>"));
  }
  EXPECT_EQ(xmpPacket(many, kSize, empty.size() - 1), "") << "no room at all";
}

TEST(XmpPacket, AVeryLongTextIsCutShortAndCostsNoRow) {
  StillInfo wordy = info();
  wordy.camera = std::string(100'000, '<');
  wordy.table.calibration = std::string(100'000, '&');
  wordy.table.rows = {{"Text", {}, std::string(100'000, 'x')}, {"Line", {{"0.500", "mm"}}}};
  const std::string packet = xmpPacket(wordy, kSize, kRoom);
  EXPECT_THAT(packet, HasSubstr(std::string(1000, 'x') + "\u2026<"));
  EXPECT_THAT(packet, Not(HasSubstr("LeftOut")));
}

}  // namespace
}  // namespace tessary
