#include "qt/QtTextRasterizer.h"

#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <vector>

#include <gmock/gmock.h>

#include "LogCapture.h"
#include "QtTest.h"

namespace tessary {
namespace {

using ::testing::IsEmpty;

constexpr uint8_t kUntouched = 0x5A;
const Color kCyan{0.0, 0.9, 0.9, 1.0};
const Color kWhite{1.0, 1.0, 1.0, 1.0};

/// A bitmap with a margin of untouched bytes before, behind and beside it.
class Canvas {
 public:
  explicit Canvas(int32_t width = 1920, int32_t height = 256, uint8_t fill = 0)
      : width_(width), height_(height), memory_(size_t(height + 2) * stride(), kUntouched) {
    for (int32_t y = 0; y < height_; ++y) std::fill_n(row(y), width_ * 4, fill);
  }

  TextRasterizer::Bitmap bitmap() { return {row(0), width_, height_, int32_t(stride())}; }
  uint8_t* row(int32_t y) { return memory_.data() + size_t(y + 1) * stride(); }
  const uint8_t* pixel(int32_t x, int32_t y) { return row(y) + x * 4; }
  bool isLit(int32_t x, int32_t y) {
    const uint8_t* p = pixel(x, y);
    return p[0] > 0 || p[1] > 0 || p[2] > 0;
  }

  struct Box {
    int32_t left = INT32_MAX, top = INT32_MAX, right = INT32_MIN, bottom = INT32_MIN;
    bool empty() const { return left > right; }
    int32_t width() const { return empty() ? 0 : right - left + 1; }
    int32_t height() const { return empty() ? 0 : bottom - top + 1; }
  };
  Box ink() {
    Box box;
    for (int32_t y = 0; y < height_; ++y)
      for (int32_t x = 0; x < width_; ++x)
        if (isLit(x, y))
          box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x),
                 std::max(box.bottom, y)};
    return box;
  }

  bool marginIsUntouched() {
    for (int32_t y = -1; y <= height_; ++y) {
      const bool outside = y < 0 || y == height_;
      for (size_t i = outside ? 0 : size_t(width_) * 4; i < stride(); ++i)
        if (row(y)[i] != kUntouched) return false;
    }
    return true;
  }

  /// FNV-1a over the pixels.
  uint64_t hash() {
    uint64_t value = 14695981039346656037U;
    for (int32_t y = 0; y < height_; ++y)
      for (int32_t i = 0; i < width_ * 4; ++i) value = (value ^ row(y)[i]) * 1099511628211U;
    return value;
  }

 private:
  size_t stride() const { return size_t(width_) * 4 + 64; }
  int32_t width_;
  int32_t height_;
  std::vector<uint8_t> memory_;
};

const char* const kLabels[] = {
    "0.000 mm",
    "123.456 μm",
    "1280 px",
    "45.00°",
    "R: 12.345 mm",
    "C: 77.56 mm",
    "A: 478.7 μm²",
    "fjgpqy|_",
    "iIlL1.,;:",
    "W",
    "-",
    ".",
    "Ångström",
    "(x, y)",
};

TEST(QtTextRasterizer, FindsItsFont) {
  const test::LogCapture log;
  QtTextRasterizer rasterizer;
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(QtTextRasterizer, TheBoundsAreThoseOfTheInk) {
  QtTextRasterizer rasterizer;
  for (const int32_t size : {12, 13, 26, 48}) {
    for (const char* text : kLabels) {
      Canvas canvas;
      rasterizer.drawLine(text, Font{size}, kWhite, 2.0, 20.0, canvas.bitmap());
      const Canvas::Box ink = canvas.ink();
      const Size bounds = rasterizer.imageBounds(text, Font{size});
      EXPECT_EQ(bounds.width, ink.width()) << size << ' ' << text;
      EXPECT_EQ(bounds.height, ink.height()) << size << ' ' << text;
    }
  }
}

TEST(QtTextRasterizer, TheBoundsAreWholePixelsAndAlwaysTheSame) {
  QtTextRasterizer rasterizer;
  for (const char* text : kLabels) {
    const Size first = rasterizer.imageBounds(text, Font{26});
    EXPECT_EQ(first.width, std::trunc(first.width));
    EXPECT_EQ(first.height, std::trunc(first.height));
    EXPECT_GT(first.width, 0.0);
    EXPECT_GT(first.height, 0.0);
    EXPECT_EQ(QtTextRasterizer().imageBounds(text, Font{26}), first);
  }
}

TEST(QtTextRasterizer, TextWithoutInkHasNoBounds) {
  QtTextRasterizer rasterizer;
  for (const char* text : {"", " ", "   ", "\n", "\t", "\xE2\x80\xA8"})
    EXPECT_EQ(rasterizer.imageBounds(text, Font{26}), Size{}) << '"' << text << '"';
}

TEST(QtTextRasterizer, LargerFontsHaveLargerInk) {
  QtTextRasterizer rasterizer;
  Size before;
  for (int32_t size = 12; size <= 48; size += 4) {
    const Size bounds = rasterizer.imageBounds("12.345 mm", Font{size});
    EXPECT_GT(bounds.width, before.width);
    EXPECT_GT(bounds.height, before.height);
    before = bounds;
  }
}

TEST(QtTextRasterizer, SizesBeyondReasonDoNotFail) {
  QtTextRasterizer rasterizer;
  for (const int32_t size : {0, -1, INT32_MIN, 1, 2, 1000, INT32_MAX}) {
    Canvas canvas;
    rasterizer.drawLine("12 μm", Font{size}, kWhite, 2.0, 5.0, canvas.bitmap());
    EXPECT_TRUE(canvas.marginIsUntouched()) << size;
    EXPECT_GT(rasterizer.imageBounds("12 μm", Font{size}).width, 0.0) << size;
  }
}

TEST(QtTextRasterizer, LettersStandOnTheBaselineWhereTheLineStarts) {
  QtTextRasterizer rasterizer;
  Canvas canvas;
  rasterizer.drawLine("H", Font{26}, kWhite, 2.0, 5.0, canvas.bitmap());
  const Canvas::Box ink = canvas.ink();
  EXPECT_EQ(ink.bottom, 250);  // five rows are left below
  EXPECT_GE(ink.left, 2);
  EXPECT_LE(ink.left, 6);
  // A capital is 0.714 of the size high.
  EXPECT_EQ(ink.height(), 19);
}

TEST(QtTextRasterizer, DescendersReachBelowTheBaseline) {
  QtTextRasterizer rasterizer;
  Canvas canvas;
  rasterizer.drawLine("g", Font{26}, kWhite, 2.0, 20.0, canvas.bitmap());
  EXPECT_GT(canvas.ink().bottom, 235);
}

TEST(QtTextRasterizer, WholePixelsAndRowsOnlyMoveThePicture) {
  QtTextRasterizer rasterizer;
  Canvas here;
  Canvas there;
  rasterizer.drawLine("12.3 μm", Font{26}, kCyan, 2.0, 20.0, here.bitmap());
  rasterizer.drawLine("12.3 μm", Font{26}, kCyan, 9.0, 51.0, there.bitmap());
  for (int32_t y = 150; y < 256; ++y)
    for (int32_t x = 0; x < 300; ++x)
      ASSERT_EQ(0, std::memcmp(here.pixel(x, y), there.pixel(x + 7, y - 31), 4)) << x << ' ' << y;
}

TEST(QtTextRasterizer, InkIsTheColourTimesItsCoverageOverOpaqueBlack) {
  QtTextRasterizer rasterizer;
  Canvas canvas;
  rasterizer.drawLine("123.4 mm", Font{26}, kCyan, 2.0, 20.0, canvas.bitmap());
  int full = 0;
  int background = 0;
  int untouched = 0;
  for (int32_t y = 0; y < 256; ++y) {
    for (int32_t x = 0; x < 1920; ++x) {
      const uint8_t* p = canvas.pixel(x, y);
      ASSERT_EQ(p[0], 0);     // no red, so no coloured fringes
      ASSERT_EQ(p[1], p[2]);  // green and blue go together
      ASSERT_LE(p[1], 230);
      ASSERT_TRUE(p[3] == 255 || (p[3] == 0 && p[1] == 0));
      full += p[1] == 230;
      background += p[3] == 255 && p[1] == 0;
      untouched += p[3] == 0;
    }
  }
  EXPECT_GT(full, 20);
  EXPECT_GT(background, 500);
  EXPECT_GT(untouched, 1920 * 200);
}

TEST(QtTextRasterizer, ThereIsBackgroundOverTheWholeLineFromAscentToDescent) {
  QtTextRasterizer rasterizer;
  Canvas canvas;
  rasterizer.drawLine(".  .", Font{26}, kWhite, 2.0, 20.0, canvas.bitmap());
  const Canvas::Box ink = canvas.ink();
  for (int32_t x = ink.left; x <= ink.right; ++x)
    for (const int32_t y : {236 - 26, 236, 236 + 6}) EXPECT_EQ(canvas.pixel(x, y)[3], 255);
  EXPECT_EQ(canvas.pixel(ink.left, 236 - 40)[3], 0);
  EXPECT_EQ(canvas.pixel(ink.left, 236 + 15)[3], 0);
  EXPECT_EQ(canvas.pixel(ink.right + 20, 236)[3], 0);
}

TEST(QtTextRasterizer, PixelsWithoutBackgroundOrInkStayAsTheyAre) {
  QtTextRasterizer rasterizer;
  Canvas canvas(1920, 256, 77);
  rasterizer.drawLine("12", Font{26}, kWhite, 2.0, 20.0, canvas.bitmap());
  EXPECT_EQ(canvas.pixel(0, 0)[0], 77);
  EXPECT_EQ(canvas.pixel(1, 236)[3], 77);
  EXPECT_EQ(canvas.pixel(3, 236)[3], 255);
  EXPECT_EQ(canvas.pixel(1000, 236)[1], 77);
}

TEST(QtTextRasterizer, ColoursAreHeldBetweenNothingAndFull) {
  struct Row {
    Color color;
    uint8_t red, green, blue;
  };
  const double nan = std::nan("");
  const double infinity = INFINITY;
  const Row rows[] = {
      {{1.0, 1.0, 1.0, 1.0}, 255, 255, 255},   {{1.0, 0.5, 0.0, 1.0}, 255, 128, 0},
      {{0.0, 0.0, 1.0 / 255.0, 1.0}, 0, 0, 1}, {{0.0, 0.0, 0.0, 1.0}, 0, 0, 0},
      {{5.0, -5.0, 0.2, 1.0}, 255, 0, 51},     {{infinity, -infinity, nan, 1.0}, 255, 0, 0},
      {{1e300, 0.0, 1.0, 7.0}, 255, 0, 255},
  };
  for (const Row& row : rows) {
    QtTextRasterizer rasterizer;
    Canvas canvas(200, 80);
    rasterizer.drawLine("HHH", Font{48}, row.color, 2.0, 20.0, canvas.bitmap());
    uint8_t most[3] = {};
    for (int32_t y = 0; y < 80; ++y)
      for (int32_t x = 0; x < 200; ++x)
        for (int i = 0; i < 3; ++i) most[i] = std::max(most[i], canvas.pixel(x, y)[i]);
    EXPECT_THAT(most, ::testing::ElementsAre(row.red, row.green, row.blue));
  }
}

TEST(QtTextRasterizer, EveryLabelCharacterOfTheProgramIsDrawn) {
  QtTextRasterizer rasterizer;
  const auto hashOf = [&](const char* text) {
    Canvas canvas(200, 80);
    rasterizer.drawLine(text, Font{26}, kWhite, 2.0, 20.0, canvas.bitmap());
    return canvas.hash();
  };
  // A character that no font has is drawn as a box or not at all; these two are such.
  const uint64_t missing = hashOf("\U0010FFFD");
  const uint64_t nothing = hashOf(" ");
  for (const char* text : {"μ", "µ", "°", "²", "0", "9", ".", "m", ":"}) {
    EXPECT_NE(hashOf(text), missing) << text;
    EXPECT_NE(hashOf(text), nothing) << text;
  }
}

TEST(QtTextRasterizer, ForeignAndBrokenTextDoesNotFail) {
  QtTextRasterizer rasterizer;
  for (const char* text : {"恭禧发财", "שלום 12", "مرحبا", "e\xCC\x81", "\xF0\x9F\x94\xAC",
                           "\xFF\xFE", "a\xC3", "\x01\x02\x7F", "a\nb\rc",
                           "\xE2\x80\xAE"
                           "abc"}) {
    Canvas canvas;
    rasterizer.drawLine(text, Font{26}, kWhite, 2.0, 20.0, canvas.bitmap());
    EXPECT_TRUE(canvas.marginIsUntouched()) << text;
    const Size bounds = rasterizer.imageBounds(text, Font{26});
    EXPECT_LT(bounds.width, 400.0) << text;
    EXPECT_LT(bounds.height, 80.0) << text;
  }
}

TEST(QtTextRasterizer, RightToLeftTextStartsAtTheLeftToo) {
  QtTextRasterizer rasterizer;
  Canvas canvas;
  rasterizer.drawLine("\xD7\xA9\xD7\x9C 12", Font{26}, kWhite, 2.0, 20.0, canvas.bitmap());
  ASSERT_FALSE(canvas.ink().empty());
  EXPECT_LT(canvas.ink().left, 10);
  EXPECT_LT(canvas.ink().right, 200);
}

TEST(QtTextRasterizer, LineBreaksDoNotBreakTheLine) {
  QtTextRasterizer rasterizer;
  for (const char* text : {"H\nH", "H\r\nH", "H\xE2\x80\xA8H", "H\xE2\x80\xA9H", "H\fH"}) {
    Canvas canvas;
    rasterizer.drawLine(text, Font{26}, kWhite, 2.0, 20.0, canvas.bitmap());
    EXPECT_EQ(canvas.ink().bottom, 235);
    EXPECT_EQ(canvas.ink().height(), 19);
    EXPECT_GT(canvas.ink().width(), 30);
  }
}

TEST(QtTextRasterizer, TextWiderThanTheBitmapIsCutOff) {
  QtTextRasterizer rasterizer;
  for (const size_t count : {200U, 5000U, 200000U}) {
    const std::string text(count, 'W');
    Canvas canvas;
    rasterizer.drawLine(text, Font{26}, kWhite, 2.0, 5.0, canvas.bitmap());
    EXPECT_EQ(canvas.ink().right, 1919) << count;
    EXPECT_TRUE(canvas.marginIsUntouched()) << count;
    EXPECT_GT(rasterizer.imageBounds(text, Font{26}).width, 1920.0) << count;
  }
}

TEST(QtTextRasterizer, NothingIsWrittenOutsideTheBitmap) {
  QtTextRasterizer rasterizer;
  struct Row {
    int32_t width, height;
    double x, baseline;
  };
  const Row rows[] = {
      {100, 20, -30.0, 5.0},   {100, 20, 90.0, 5.0},   {100, 20, 2.0, -10.0},
      {100, 20, 2.0, 19.0},    {1, 1, 0.0, 0.0},       {100, 20, 5000.0, 5.0},
      {100, 20, -5000.0, 5.0}, {100, 20, 2.0, 5000.0}, {100, 20, 2.5, 5.25},
  };
  for (const Row& row : rows) {
    Canvas canvas(row.width, row.height);
    rasterizer.drawLine("Wgj|12.3 μm", Font{48}, kWhite, row.x, row.baseline, canvas.bitmap());
    EXPECT_TRUE(canvas.marginIsUntouched()) << row.x << ' ' << row.baseline;
  }
}

TEST(QtTextRasterizer, ABitmapWithoutPixelsIsLeftAlone) {
  QtTextRasterizer rasterizer;
  uint8_t bytes[16] = {};
  for (const TextRasterizer::Bitmap& bitmap :
       {TextRasterizer::Bitmap{nullptr, 10, 10, 40}, TextRasterizer::Bitmap{bytes, 0, 0, 0},
        TextRasterizer::Bitmap{bytes, -4, 1, 16}, TextRasterizer::Bitmap{bytes, 4, 1, 8}})
    rasterizer.drawLine("W", Font{26}, kWhite, 0.0, 0.0, bitmap);
  EXPECT_THAT(bytes, ::testing::Each(0));
}

/// Pixels and bounds of all labels as one number.
uint64_t fingerprint() {
  QtTextRasterizer rasterizer;
  uint64_t value = 0;
  for (const char* text : kLabels) {
    for (const int32_t size : {12, 26, 48}) {
      Canvas canvas(800, 100);
      rasterizer.drawLine(text, Font{size}, kCyan, 2.0, 20.0, canvas.bitmap());
      const Size bounds = rasterizer.imageBounds(text, Font{size});
      value = value * 31 + canvas.hash() + uint64_t(bounds.width) * 1000 + uint64_t(bounds.height);
    }
  }
  return value;
}

// Run by the test below, in a process of its own.
TEST(QtTextRasterizerChild, DISABLED_WritesItsFingerprint) {
  const char* file = std::getenv("FINGERPRINT_FILE");
  ASSERT_NE(file, nullptr);
  std::ofstream(file) << fingerprint();
}

TEST(QtTextRasterizer, PixelsDependNeitherOnTheScreenNorOnTheFontSettings) {
  const QTemporaryDir folder;
  const std::string path = folder.path().toStdString();
  std::ofstream(path + "/fonts.conf")
      << "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig>"
         "<include>/etc/fonts/fonts.conf</include><match target=\"font\">"
         "<edit name=\"antialias\" mode=\"assign\"><bool>false</bool></edit>"
         "<edit name=\"hinting\" mode=\"assign\"><bool>true</bool></edit>"
         "<edit name=\"autohint\" mode=\"assign\"><bool>true</bool></edit>"
         "<edit name=\"hintstyle\" mode=\"assign\"><const>hintfull</const></edit>"
         "<edit name=\"rgba\" mode=\"assign\"><const>bgr</const></edit>"
         "</match></fontconfig>";
  const std::vector<std::string> environments[] = {
      {},
      {"QT_SCALE_FACTOR=2"},
      {"QT_SCALE_FACTOR=1.5", "QT_FONT_DPI=192"},
      {"LC_ALL=C", "LANG=C"},
      {"FONTCONFIG_FILE=" + path + "/fonts.conf"},
  };
  const std::string expected = std::to_string(fingerprint());
  for (std::vector<std::string> environment : environments) {
    const std::string what = environment.empty() ? "unchanged" : environment[0];
    const std::string file = path + "/fingerprint";
    environment.push_back("FINGERPRINT_FILE=" + file);
    std::remove(file.c_str());
    ASSERT_EQ(
        test::runDisabledTest("QtTextRasterizerChild.DISABLED_WritesItsFingerprint", environment),
        0);
    std::string found;
    std::ifstream(file) >> found;
    EXPECT_EQ(found, expected) << what;
  }
}

// Run by the test below, in a process of its own.
TEST(QtTextRasterizerChild, DISABLED_DrawsWithoutAnyFont) {
  const test::LogCapture log;
  QtTextRasterizer rasterizer;
  EXPECT_EQ(log.lines().size(), 1U);
  Canvas canvas;
  rasterizer.drawLine("12.3 μm 恭禧发财", Font{26}, kCyan, 2.0, 20.0, canvas.bitmap());
  rasterizer.imageBounds("12.3 μm 恭禧发财", Font{26});
  EXPECT_TRUE(canvas.marginIsUntouched());
}

TEST(QtTextRasterizer, AMachineWithoutFontsIsToldSoAndGoesOn) {
  const QTemporaryDir folder;
  const std::string file = folder.filePath("fonts.conf").toStdString();
  std::ofstream(file) << "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\">"
                         "<fontconfig></fontconfig>";
  EXPECT_EQ(test::runDisabledTest("QtTextRasterizerChild.DISABLED_DrawsWithoutAnyFont",
                                  {"FONTCONFIG_FILE=" + file}),
            0);
}

}  // namespace
}  // namespace tessary
