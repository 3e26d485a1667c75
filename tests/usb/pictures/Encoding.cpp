#include "pictures/Encoding.h"

#include <cmath>
#include <memory>
#include <stdexcept>

#include <turbojpeg.h>

namespace tessary::lab {
namespace {

constexpr int kQuality = 85;

struct Yuv {
  double y, u, v;
};

Yuv toYuv(const uint8_t* pixel) {
  const double red = pixel[0] / 255.0;
  const double green = pixel[1] / 255.0;
  const double blue = pixel[2] / 255.0;
  return {16 + 65.481 * red + 128.553 * green + 24.966 * blue,
          128 - 37.797 * red - 74.203 * green + 112.0 * blue,
          128 + 112.0 * red - 93.786 * green - 18.214 * blue};
}

uint8_t toByte(double value) { return uint8_t(std::lround(value)); }

}  // namespace

std::vector<uint8_t> encodeJpeg(const Canvas& canvas) {
  const std::unique_ptr<void, int (*)(tjhandle)> compressor(tjInitCompress(), tjDestroy);
  unsigned char* jpeg = nullptr;
  unsigned long size = 0;
  const int failed =
      tjCompress2(compressor.get(), canvas.bytes().data(), canvas.size().width, 0,
                  canvas.size().height, TJPF_RGB, &jpeg, &size, TJSAMP_422, kQuality, 0);
  const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(jpeg, tjFree);
  if (failed) throw std::runtime_error(tjGetErrorStr2(compressor.get()));
  return {jpeg, jpeg + size};
}

std::vector<uint8_t> encodeYuyv(const Canvas& canvas) {
  std::vector<uint8_t> bytes;
  const auto& rgb = canvas.bytes();
  bytes.reserve(rgb.size() / 3 * 2);
  for (size_t i = 0; i + 5 < rgb.size(); i += 6) {
    const Yuv left = toYuv(&rgb[i]);
    const Yuv right = toYuv(&rgb[i + 3]);
    bytes.insert(bytes.end(), {toByte(left.y), toByte((left.u + right.u) / 2), toByte(right.y),
                               toByte((left.v + right.v) / 2)});
  }
  return bytes;
}

}  // namespace tessary::lab
