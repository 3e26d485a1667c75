// Frames as a bad cable makes them, and worse: JPEG frames with wounds in header, tables and data,
// and raw ones whose size is not what was announced. Nothing crashes, and what comes out of a
// decoder never depends on the frames before: one that has just been made, with another past in its
// buffers, makes the same of each.

#include <cstdlib>
#include <cstring>
#include <random>
#include <span>

#include <turbojpeg.h>

#include "JpegFrames.h"
#include "Trial.h"
#include "base/FourCharCode.h"
#include "jpeg/JpegFrameDecoder.h"
#include "yuv/YuvFrameDecoder.h"

namespace tessary {
namespace {

using test::Bytes;

struct Frame {
  Bytes bytes;
  TextureSize announced;
  size_t bytesPerRow = 0;
};

/// What cameras send, whole.
std::vector<Frame> wholeFrames() {
  std::vector<Frame> frames;
  for (const char* setting : {"", "TJ_OPTIMIZE", "TJ_RESTART"}) {
    if (*setting) setenv(setting, "1", 1);
    for (const int subsampling : {TJSAMP_422, TJSAMP_420, TJSAMP_444, TJSAMP_GRAY}) {
      for (const TextureSize size : {TextureSize{48, 32}, {33, 17}, {16, 16}}) {
        frames.push_back({test::encode(size, subsampling), size});
        if (!*setting) frames.push_back({test::without(frames.back().bytes, 0xC4), size});
      }
    }
    if (*setting) unsetenv(setting);
  }
  return frames;
}

class Mutations {
 public:
  explicit Mutations(uint64_t seed) : random_(seed) {}

  size_t below(size_t end) { return size_t(random_() % end); }

  Frame jpeg(const std::vector<Frame>& whole) {
    Frame frame = whole[below(whole.size())];
    for (size_t wounds = below(4); wounds > 0; --wounds) wound(frame.bytes, whole);
    if (below(50) == 0) frame.announced.width += int32_t(below(3)) - 1;
    return frame;
  }

  Frame raw() {
    Frame frame;
    frame.announced = {int32_t(below(70)) - 3, int32_t(below(50)) - 3};
    if (below(100) == 0) frame.announced = {int32_t(random_()), int32_t(random_())};
    const size_t row = size_t(std::max(frame.announced.width, 0) % 1000 + 1) / 2 * 4;
    if (below(3) == 0) frame.bytesPerRow = row + below(20) - std::min<size_t>(row, below(4));
    const size_t rows = size_t(std::max(frame.announced.height, 0) % 1000) * (2 + below(2)) / 2;
    const size_t whole = std::max(frame.bytesPerRow, row) * rows;
    frame.bytes.resize(below(4) == 0 ? below(whole + 40)
                                     : whole + below(9) - std::min<size_t>(whole, 4));
    for (uint8_t& byte : frame.bytes) byte = uint8_t(random_());
    return frame;
  }

 private:
  void wound(Bytes& bytes, const std::vector<Frame>& whole) {
    if (bytes.size() < 8) return;
    const size_t at = below(bytes.size());
    const auto place = bytes.begin() + ptrdiff_t(at);
    switch (below(8)) {
      case 0: bytes[at] = uint8_t(random_()); break;
      case 1: bytes[at] ^= uint8_t(1U << below(8)); break;
      case 2:
        bytes.erase(place, place + ptrdiff_t(below(std::min<size_t>(bytes.size() - at, 64))));
        break;
      case 3: bytes.insert(place, below(16), uint8_t(random_())); break;
      case 4: bytes.resize(at); break;
      case 5: {  // the rest is another frame's, as when the end of a transfer is lost
        const Bytes& other = whole[below(whole.size())].bytes;
        bytes.resize(at);
        bytes.insert(bytes.end(), other.begin() + ptrdiff_t(std::min(at, other.size())),
                     other.end());
        break;
      }
      default: loseSegment(bytes);
    }
  }
  /// One of the tables goes, or any other segment.
  void loseSegment(Bytes& bytes) {
    static constexpr uint8_t kMarkers[] = {0xC4, 0xC4, 0xDB, 0xDB, 0xC0, 0xDA, 0xDD, 0xE0};
    const std::vector<test::Found> found = test::segments(bytes, kMarkers[below(8)]);
    if (found.empty()) return;
    const test::Found& segment = found[below(found.size())];
    if (segment.position + segment.size > bytes.size()) return;
    const auto start = bytes.begin() + ptrdiff_t(segment.position);
    bytes.erase(start, start + ptrdiff_t(segment.size));
  }

  std::mt19937_64 random_;
};

/// A pool whose next buffer of `size` holds nothing but `past`.
void leaveBehind(PixelBufferPool& pool, TextureSize size, uint8_t past) {
  if (size.width <= 0 || size.height <= 0 || size.width > 128 || size.height > 128) return;
  const auto picture = pool.take(size);
  std::memset(picture->data(), past, picture->byteCount());
}

/// Decodes as a stream does, and once more with everything new.
class Comparison {
 public:
  /// Whether both make the same of `frame`. `fresh` is a decoder that has seen nothing.
  bool holds(FrameDecoder& used, FrameDecoder& fresh, const Frame& frame) {
    // As large as the frame to the byte, so that reading past its end is seen.
    const std::unique_ptr<uint8_t[]> exact(new uint8_t[frame.bytes.size()]);
    std::copy(frame.bytes.begin(), frame.bytes.end(), exact.get());
    const std::span<const uint8_t> bytes(exact.get(), frame.bytes.size());
    PixelBufferPool freshPool;
    leaveBehind(pool_, frame.announced, 0x5A);
    leaveBehind(freshPool, frame.announced, 0xA5);
    const auto one = used.decode(bytes, frame.announced, frame.bytesPerRow, pool_);
    const auto other = fresh.decode(bytes, frame.announced, frame.bytesPerRow, freshPool);
    if (one) ++pictures;
    if (!one || !other) return !one && !other;
    return one->size() == frame.announced && other->size() == frame.announced &&
           std::memcmp(one->data(), other->data(), one->byteCount()) == 0;
  }

  int64_t pictures = 0;

 private:
  PixelBufferPool pool_;
};

int run(const Trial& trial) {
  const std::vector<Frame> whole = wholeFrames();
  Mutations mutations(trial.seed());
  JpegFrameDecoder jpeg;
  constexpr uint32_t kRaw[] = {kMediaSubTypeYUYV, kMediaSubTypeUYVY, kMediaSubTypeNV12};
  const std::unique_ptr<FrameDecoder> raw[] = {YuvFrameDecoder::make(kRaw[0]),
                                               YuvFrameDecoder::make(kRaw[1]),
                                               YuvFrameDecoder::make(kRaw[2])};
  Comparison comparison;
  int64_t failures = 0;
  for (int64_t i = 0; i < trial.count() && failures < 10; ++i) {
    bool same = true;
    if (i % 4 == 3) {
      const size_t kind = mutations.below(3);
      same = comparison.holds(*raw[kind], *YuvFrameDecoder::make(kRaw[kind]), mutations.raw());
    } else {
      JpegFrameDecoder fresh;
      same = comparison.holds(jpeg, fresh, mutations.jpeg(whole));
    }
    if (same) continue;
    fmt::print("frame {}: what came out depends on the frames before\n", i);
    ++failures;
  }
  // A trial that mutates everything beyond recognition would show nothing.
  if (failures == 0 && comparison.pictures < trial.count() / 10) {
    fmt::print("only {} frames became pictures\n", comparison.pictures);
    ++failures;
  }
  return trial.end(
      failures, fmt::format("{} frames, {} of them pictures", trial.count(), comparison.pictures));
}

}  // namespace
}  // namespace tessary

int main(int argc, char** argv) {
  return tessary::run(tessary::Trial("mutated_frames", argc, argv, 20000));
}
