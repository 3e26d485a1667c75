#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SimulatedRig.h"
#include "simulated/FrameLoop.h"
#include "simulated/SimulatedScene.h"

namespace tessary {
namespace {

std::vector<CaptureFormat> formats() { return SimulatedMicroscope(test::kAllSubTypes).formats(); }

/// Decoded frames of one format.
class Pictures {
 public:
  explicit Pictures(const CaptureFormat& format)
      : frames_(format, test::cameraEncoder()), decoder_(test::decoders()(format.mediaSubType)) {}

  std::shared_ptr<PixelBuffer> at(size_t index) {
    const CaptureFormat& format = frames_.format();
    return decoder_->decode(frames_.frame(index), {format.width, format.height},
                            frames_.bytesPerRow(), pool_);
  }
  FrameLoop& frames() { return frames_; }

 private:
  FrameLoop frames_;
  std::unique_ptr<FrameDecoder> decoder_;
  PixelBufferPool pool_;
};

int greenAt(const PixelBuffer& picture, int32_t x, int32_t y) {
  return picture.data()[size_t(y) * picture.bytesPerRow() + size_t(x) * 4 + 1];
}

/// First columns of the dark strokes in row `y`.
std::vector<int32_t> strokes(const PixelBuffer& picture, int32_t y) {
  std::vector<int32_t> columns;
  bool dark = false;
  for (int32_t x = 0; x < picture.size().width; ++x) {
    const bool nowDark = greenAt(picture, x, y) < 45;  // specimen and ink differ by more
    if (nowDark && !dark) columns.push_back(x);
    dark = nowDark;
  }
  return columns;
}

size_t indexIn(const PixelBuffer& picture) {
  size_t index = 0;
  for (int32_t bit = 0; bit < 16; ++bit) {
    if (greenAt(picture, bit * 16 + 8, picture.size().height - 8) > 128) index |= size_t(1) << bit;
  }
  return index;
}

TEST(SimulatedPicture, OneMillimetreLiesAtKnownColumns) {
  struct Row {
    int32_t width, left, pixelsPerMillimetre;
  };
  const std::vector<Row> rows{{640, 120, 400}, {1280, 240, 800}, {1920, 360, 1200}};
  for (const CaptureFormat& format : formats()) {
    for (const Row& row : rows) {
      if (row.width != format.width) continue;
      Pictures pictures(format);
      for (const size_t index : {0U, 5U}) {
        const auto picture = pictures.at(index);
        ASSERT_TRUE(picture);
        // Where only every tenth line reaches, and a little above the foot, where all do.
        const int32_t foot = format.height / 2;
        std::vector<int32_t> tens;
        std::vector<int32_t> all;
        for (int32_t line = 0; line <= 100; ++line) {
          const int32_t x = row.left + row.pixelsPerMillimetre * line / 100;
          all.push_back(x);
          if (line % 10 == 0) tens.push_back(x);
        }
        EXPECT_EQ(strokes(*picture, foot - format.height * 85 / 1000), tens) << format.width;
        EXPECT_EQ(strokes(*picture, foot - format.height * 30 / 1000), all) << format.width;
      }
    }
  }
}

TEST(SimulatedPicture, TheSpecimenMovesAndTheLoopCloses) {
  const TextureSize size{640, 480};
  const SimulatedScene scene(size, 48);
  const auto change = [&](size_t from, size_t to) {
    PixelBuffer a(size);
    PixelBuffer b(size);
    scene.draw(from, a);
    scene.draw(to, b);
    uint64_t sum = 0;
    for (size_t i = 0; i < a.byteCount(); ++i) sum += uint64_t(std::abs(a.data()[i] - b.data()[i]));
    return double(sum) / double(a.byteCount());
  };
  EXPECT_EQ(change(7, 7), 0.0);
  EXPECT_GT(change(0, 24), 1.3 * change(0, 1));   // across the loop it has gone far
  EXPECT_LT(change(47, 0), 1.15 * change(0, 1));  // around its end no farther than elsewhere
}

TEST(SimulatedPicture, EveryFrameShowsItsIndex) {
  for (const CaptureFormat& format : formats()) {
    if (format.width != 640) continue;
    Pictures pictures(format);
    for (size_t index = 0; index < pictures.frames().frameCount(); ++index) {
      const auto picture = pictures.at(index);
      ASSERT_TRUE(picture);
      EXPECT_EQ(indexIn(*picture), index);
    }
  }
}

TEST(SimulatedPicture, TheLoopReplaysTheSameBytes) {
  FrameLoop loop(formats().at(0), test::cameraEncoder());
  std::vector<const uint8_t*> first;
  for (size_t i = 0; i < loop.frameCount(); ++i) first.push_back(loop.frame(i).data());
  for (size_t i = 0; i < loop.frameCount(); ++i) {
    EXPECT_EQ(loop.frame(i + loop.frameCount()).data(), first[i]);
  }
}

TEST(SimulatedPicture, CompressedFramesAreAsLargeAsACamerasAre) {
  FrameLoop loop(formats().at(2), test::cameraEncoder());
  ASSERT_EQ(loop.format().width, 1920);
  const size_t size = loop.frame(0).size();
  EXPECT_GT(size, 300'000U);
  EXPECT_LT(size, 400'000U);
}

TEST(SimulatedPicture, EveryPixelIsOpaque) {
  const TextureSize size{1280, 720};
  const SimulatedScene scene(size, 4);
  PixelBuffer picture(size);
  for (size_t index = 0; index < 4; ++index) {
    scene.draw(index, picture);
    for (size_t i = 3; i < picture.byteCount(); i += 4) ASSERT_EQ(picture.data()[i], 255);
  }
}

}  // namespace
}  // namespace tessary
