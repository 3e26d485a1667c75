#include "simulated/SimulatedScene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tessary {
namespace {

constexpr uint32_t kInk = 0xFF0A0A0A;
constexpr uint32_t kBlack = 0xFF000000;
constexpr uint32_t kWhite = 0xFFFFFFFF;
constexpr float kBrightest = 223.0F;
constexpr size_t kGrainPixels = size_t(1) << 16;
constexpr int32_t kIndexBits = 16;
constexpr int32_t kIndexSquare = 16;

/// Small numbers that look like chance and are the same in every run.
class Chance {
 public:
  explicit Chance(uint64_t seed) : state_(seed) {}
  uint64_t bits() {
    state_ += 0x9E3779B97F4A7C15U;
    uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31);
  }
  float between(float low, float high) {
    return low + (high - low) * float(bits() >> 40) / float(1 << 24);
  }

 private:
  uint64_t state_;
};

struct Colour {
  float blue;
  float green;
  float red;
};

uint32_t packed(const Colour& colour) {
  const auto channel = [](float value) { return uint32_t(std::clamp(value, 0.0F, kBrightest)); };
  return 0xFF000000U | channel(colour.red) << 16 | channel(colour.green) << 8 |
         channel(colour.blue);
}

Colour unpacked(uint32_t pixel) {
  return {float(pixel & 255U), float(pixel >> 8 & 255U), float(pixel >> 16 & 255U)};
}

Colour mixed(const Colour& under, const Colour& over, float share) {
  const float rest = 1.0F - share;
  return {under.blue * rest + over.blue * share, under.green * rest + over.green * share,
          under.red * rest + over.red * share};
}

/// Soft clouds between -1 and 1: values on a grid, smoothly joined.
class Clouds {
 public:
  Clouds(uint64_t seed, float cell) : perPixel_(1.0F / cell) {
    Chance chance(seed);
    for (float& value : values_) value = chance.between(-1.0F, 1.0F);
  }

  void addRow(int32_t y, float strength, std::vector<float>& row) const {
    const float gridY = float(y) * perPixel_;
    const auto top = size_t(gridY);
    const float fy = smooth(gridY - float(top));
    for (size_t x = 0; x < row.size(); ++x) {
      const float gridX = float(x) * perPixel_;
      const auto left = size_t(gridX);
      const float fx = smooth(gridX - float(left));
      const float above = at(left, top) + (at(left + 1, top) - at(left, top)) * fx;
      const float below = at(left, top + 1) + (at(left + 1, top + 1) - at(left, top + 1)) * fx;
      row[x] += strength * (above + (below - above) * fy);
    }
  }

 private:
  static constexpr size_t kSide = 64;
  static float smooth(float t) { return t * t * (3.0F - 2.0F * t); }
  float at(size_t x, size_t y) const { return values_[y % kSide * kSide + x % kSide]; }

  float perPixel_;
  std::array<float, kSide * kSide> values_{};
};

/// One cell: an ellipse with a dark wall and a nucleus.
struct Cell {
  float x, y;
  float across, along;  // half axes in pixels
  float turn;
  Colour body;
};

uint32_t* rowOf(PixelBuffer& picture, int32_t y) {
  return reinterpret_cast<uint32_t*>(picture.data() + size_t(y) * picture.bytesPerRow());
}

void fill(PixelBuffer& picture, int32_t left, int32_t top, int32_t width, int32_t height,
          uint32_t colour) {
  const TextureSize size = picture.size();
  const int32_t right = std::min(left + width, size.width);
  const int32_t bottom = std::min(top + height, size.height);
  for (int32_t y = std::max(top, 0); y < bottom; ++y) {
    std::fill(rowOf(picture, y) + std::max(left, 0), rowOf(picture, y) + right, colour);
  }
}

}  // namespace

SimulatedScene::SimulatedScene(TextureSize size, size_t pictureCount)
    : size_(size),
      pictureCount_(pictureCount),
      drift_(std::max(size.width / 160, 2)),
      stride_(size_t(size.width + 2 * drift_)),
      height_(size.height + 2 * drift_),
      specimen_(stride_ * size_t(height_)),
      grain_(kGrainPixels + size_t(size.width)) {
  drawBackground();
  drawCells();
  Chance chance(11);
  for (uint32_t& pixel : grain_) {
    // The sum of four even chances is near enough to a camera's noise.
    pixel = 0;
    for (uint64_t bits = chance.bits(), part = 0; part < 4; ++part, bits >>= 9) {
      pixel += uint32_t(bits & 7) | uint32_t(bits >> 3 & 7) << 8 | uint32_t(bits >> 6 & 7) << 16;
    }
  }
}

void SimulatedScene::drawBackground() {
  const float scale = float(size_.width) / 1280.0F;
  const Clouds wide(1, 230.0F * scale);
  const Clouds fine(2, 17.0F * scale);
  std::vector<float> clouds(stride_);
  for (int32_t y = 0; y < height_; ++y) {
    std::fill(clouds.begin(), clouds.end(), 0.0F);
    wide.addRow(y, 9.0F, clouds);
    fine.addRow(y, 5.0F, clouds);
    uint32_t* row = specimen_.data() + size_t(y) * stride_;
    for (size_t x = 0; x < stride_; ++x) {
      row[x] = packed({196.0F + clouds[x], 206.0F + 0.8F * clouds[x], 204.0F + 0.6F * clouds[x]});
    }
  }
}

void SimulatedScene::drawCells() {
  const float scale = float(size_.width) / 1280.0F;
  Chance chance(7);
  for (int drawn = 0; drawn < 90; ++drawn) {
    Cell cell{};
    cell.x = chance.between(0.0F, float(stride_));
    cell.y = chance.between(0.0F, float(height_));
    cell.across = chance.between(14.0F, 46.0F) * scale;
    cell.along = cell.across * chance.between(1.0F, 1.7F);
    cell.turn = chance.between(0.0F, std::numbers::pi_v<float>);
    cell.body = {chance.between(140.0F, 190.0F), chance.between(85.0F, 140.0F),
                 chance.between(130.0F, 195.0F)};
    const float cosine = std::cos(cell.turn);
    const float sine = std::sin(cell.turn);
    const auto reach = int32_t(cell.along) + 2;
    const int32_t left = std::max(int32_t(cell.x) - reach, 0);
    const int32_t right = std::min(int32_t(cell.x) + reach, int32_t(stride_) - 1);
    const int32_t top = std::max(int32_t(cell.y) - reach, 0);
    const int32_t bottom = std::min(int32_t(cell.y) + reach, height_ - 1);
    for (int32_t y = top; y <= bottom; ++y) {
      for (int32_t x = left; x <= right; ++x) {
        const float dx = float(x) - cell.x;
        const float dy = float(y) - cell.y;
        const float u = (dx * cosine + dy * sine) / cell.along;
        const float v = (dy * cosine - dx * sine) / cell.across;
        const float distance = std::sqrt(u * u + v * v);  // 1 on the wall
        if (distance >= 1.0F) continue;
        const float inward = (1.0F - distance) * cell.across;  // pixels from the wall
        const float body = std::min(inward / 2.0F, 1.0F) * 0.55F;
        const float wall = std::max(0.0F, 1.0F - std::abs(inward - 3.0F * scale) / (2.5F * scale));
        const float nucleus = std::clamp((0.36F - distance) * cell.across / 3.0F, 0.0F, 1.0F);
        Colour colour = mixed(unpacked(specimenAt(x, y)), cell.body, body);
        colour = mixed(colour, {110.0F, 60.0F, 95.0F}, 0.6F * wall);
        colour = mixed(colour, {120.0F, 48.0F, 80.0F}, 0.75F * nucleus);
        specimenAt(x, y) = packed(colour);
      }
    }
  }
}

void SimulatedScene::draw(size_t index, PixelBuffer& picture) const {
  const double angle = 2.0 * std::numbers::pi * double(index) / double(pictureCount_);
  const auto left = size_t(std::lround(drift_ * (1.0 + std::cos(angle))));
  const auto top = size_t(std::lround(drift_ * (1.0 + std::sin(angle))));
  Chance chance(index);
  for (int32_t y = 0; y < size_.height; ++y) {
    const uint32_t* specimen = specimen_.data() + (size_t(y) + top) * stride_ + left;
    const uint32_t* grain = grain_.data() + chance.bits() % kGrainPixels;
    uint32_t* row = rowOf(picture, y);
    for (int32_t x = 0; x < size_.width; ++x) row[x] = specimen[x] + grain[x];
  }
  drawMicrometer(picture);
  drawIndex(index, picture);
}

void SimulatedScene::drawMicrometer(PixelBuffer& picture) const {
  const double pitch = size_.width * kMillimetre;
  const double left = (size_.width - pitch) / 2;
  const int32_t foot = size_.height / 2;
  const int32_t thickness = size_.width > 1000 ? 2 : 1;
  for (int32_t division = 0; division <= 100; ++division) {
    const double height = division % 10 == 0 ? 0.10 : division % 5 == 0 ? 0.07 : 0.045;
    const auto length = int32_t(size_.height * height);
    const auto x = int32_t(std::lround(left + pitch * division / 100));
    fill(picture, x, foot - length, thickness, length + 1, kInk);
  }
  fill(picture, int32_t(std::lround(left)), foot, int32_t(std::lround(pitch)) + 1, 1, kInk);
}

void SimulatedScene::drawIndex(size_t index, PixelBuffer& picture) const {
  for (int32_t bit = 0; bit < kIndexBits; ++bit) {
    fill(picture, bit * kIndexSquare, size_.height - kIndexSquare, kIndexSquare, kIndexSquare,
         (index >> bit & 1U) != 0 ? kWhite : kBlack);
  }
}

}  // namespace tessary
