#include "pictures/Specimen.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "common/PictureStrip.h"

namespace tessary::lab {
namespace {

constexpr double kBackground = 225;
constexpr double kNoise = 4;  // standard deviation, in steps of 255
constexpr int kCells = 60;
constexpr double kCellOpacity = 0.6;
constexpr double kCellEdge = 3;  // pixels from the inside to the outside
constexpr double kWidthOfOneMillimetre = 0.625;
constexpr int kDivisions = 100;
constexpr Rgb kInk{10, 10, 10};
constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kBlack{0, 0, 0};

struct Cell {
  double x, y, radius;
  Rgb color;
};

/// `generator`'s bits are the same everywhere, the standard's distributions are not.
double uniform(std::mt19937& generator, double low, double high) {
  return low + (high - low) * double(generator()) / double(std::mt19937::max());
}

std::vector<Cell> cells(Size size) {
  std::mt19937 generator(7);
  std::vector<Cell> all;
  for (int i = 0; i < kCells; ++i) {
    Cell cell{};
    cell.x = uniform(generator, 0, size.width);
    cell.y = uniform(generator, 0, size.height);
    cell.radius = uniform(generator, 8, 40) * size.width / 1280;
    cell.color.red = uniform(generator, 120, 200);
    cell.color.green = uniform(generator, 60, 120);
    cell.color.blue = uniform(generator, 120, 190);
    all.push_back(cell);
  }
  return all;
}

Rgb mix(const Rgb& below, const Rgb& above, double opacity) {
  return {below.red + (above.red - below.red) * opacity,
          below.green + (above.green - below.green) * opacity,
          below.blue + (above.blue - below.blue) * opacity};
}

}  // namespace

Specimen::Specimen(Size size) : size_(size) {
  still_.reserve(size_t(size.width) * size_t(size.height));
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const double wave = std::sin(x / 70.0);
      still_.push_back({kBackground, kBackground, kBackground - 15 * wave * wave});
    }
  }
  for (const Cell& cell : cells(size)) {
    const double reach = cell.radius + kCellEdge;
    const int top = std::max(0, int(cell.y - reach));
    const int bottom = std::min(size.height - 1, int(cell.y + reach));
    const int left = std::max(0, int(cell.x - reach));
    const int right = std::min(size.width - 1, int(cell.x + reach));
    for (int y = top; y <= bottom; ++y) {
      for (int x = left; x <= right; ++x) {
        const double inside = cell.radius - std::hypot(x - cell.x, y - cell.y);
        Rgb& pixel = still_[size_t(y) * size_t(size.width) + size_t(x)];
        pixel = mix(pixel, cell.color, kCellOpacity * std::clamp(inside / kCellEdge, 0.0, 1.0));
      }
    }
  }
}

Canvas Specimen::picture(uint16_t number) const {
  Canvas canvas(size_);
  std::mt19937 generator(number);
  std::normal_distribution<double> noise(0, kNoise);
  for (int y = 0; y < size_.height; ++y) {
    for (int x = 0; x < size_.width; ++x) {
      const Rgb& pixel = still_[size_t(y) * size_t(size_.width) + size_t(x)];
      const double grain = noise(generator);
      canvas.set(x, y, {pixel.red + grain, pixel.green + grain, pixel.blue + grain});
    }
  }
  drawMicrometer(canvas);
  drawStrip(canvas, number);
  return canvas;
}

void Specimen::drawMicrometer(Canvas& canvas) const {
  const double length = size_.width * kWidthOfOneMillimetre;
  const double left = (size_.width - length) / 2;
  const int base = size_.height / 2;
  const int thickness = size_.width > 1000 ? 2 : 1;
  for (int i = 0; i <= kDivisions; ++i) {
    const double share = i % 10 == 0 ? 0.1 : i % 5 == 0 ? 0.07 : 0.045;
    const int height = int(size_.height * share);
    const int x = int(std::lround(left + length * i / kDivisions));
    canvas.fill(x, base - height, thickness, height, kInk);
  }
  canvas.fill(int(std::lround(left)), base, int(std::lround(length)) + thickness, 1, kInk);
}

void Specimen::drawStrip(Canvas& canvas, uint16_t number) {
  const int top = canvas.size().height - kStripSquare;
  int x = 0;
  const auto square = [&](const Rgb& color) {
    canvas.fill(x, top, kStripSquare, kStripSquare, color);
    x += kStripSquare;
  };
  for (int bit = 0; bit < kStripBits; ++bit) square(number >> bit & 1 ? kWhite : kBlack);
  for (const Rgb& mark : {Rgb{255, 0, 0}, Rgb{0, 255, 0}, Rgb{0, 0, 255}}) square(mark);
  for (int bit = 0; bit < kStripBits; ++bit) square(number >> bit & 1 ? kBlack : kWhite);
}

}  // namespace tessary::lab
