#include "png/DeflateStrips.h"

#include <algorithm>
#include <array>
#include <new>

#include <zlib.h>

namespace tessary {
namespace {

constexpr int32_t kStripRows = 64;  // few enough to share a picture out evenly among threads
constexpr int32_t kBatchRows = 16;  // filtered rows that stay in a core's own cache

constexpr uint8_t kFilterSub = 1;
constexpr int kFastest = 1;
constexpr int kRawDeflate = -15;  // the largest window, and no zlib header of its own
constexpr int kMemoryLevel = 8;   // zlib's default
constexpr std::array<uint8_t, 2> kZlibHeader{0x78, 0x01};
constexpr size_t kZlibTrailer = 4;  // the checksum
constexpr size_t kFlushRoom = 64;   // what a flush may add to zlib's own bound

class Deflater {
 public:
  Deflater() {
    ready_ = deflateInit2(&stream_, kFastest, Z_DEFLATED, kRawDeflate, kMemoryLevel, Z_RLE) == Z_OK;
  }
  ~Deflater() {
    if (ready_) deflateEnd(&stream_);
  }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  bool isReady() const { return ready_; }
  size_t bound(size_t rawBytes) { return deflateBound(&stream_, rawBytes) + kFlushRoom; }
  void writeTo(std::span<uint8_t> target) {
    stream_.next_out = target.data();
    stream_.avail_out = uInt(target.size());
  }
  /// Whether all of `bytes` went in, and with a flush all came out.
  bool add(std::span<uint8_t> bytes, int flush) {
    stream_.next_in = bytes.data();
    stream_.avail_in = uInt(bytes.size());
    const int result = deflate(&stream_, flush);
    return stream_.avail_in == 0 && stream_.avail_out > 0 &&
           result == (flush == Z_FINISH ? Z_STREAM_END : Z_OK);
  }
  size_t written() const { return stream_.total_out; }

 private:
  z_stream stream_{};
  bool ready_ = false;
};

}  // namespace

DeflateStrips::DeflateStrips(const PixelBuffer& picture)
    : picture_(picture), strips_(size_t((picture.size().height + kStripRows - 1) / kStripRows)) {}

bool DeflateStrips::compress(size_t index) try {
  Strip& strip = strips_[index];
  const bool isFirst = index == 0;
  const bool isLast = index + 1 == strips_.size();
  const auto begin = int32_t(index) * kStripRows;
  const int32_t end = std::min(begin + kStripRows, picture_.size().height);
  const size_t rowBytes = rawRowBytes();
  strip.rawByteCount = size_t(end - begin) * rowBytes;

  Deflater deflater;
  if (!deflater.isReady()) return false;
  const size_t bound = deflater.bound(strip.rawByteCount);
  const size_t before = isFirst ? kZlibHeader.size() : 0;
  strip.bytes = std::make_unique_for_overwrite<uint8_t[]>(before + bound + kZlibTrailer);
  if (isFirst) std::ranges::copy(kZlibHeader, strip.bytes.get());
  deflater.writeTo({strip.bytes.get() + before, bound});

  strip.checksum = adler32(0, nullptr, 0);
  const auto batch = std::make_unique_for_overwrite<uint8_t[]>(size_t(kBatchRows) * rowBytes);
  for (int32_t y = begin; y < end; y += kBatchRows) {
    const int32_t batchEnd = std::min(y + kBatchRows, end);
    for (int32_t row = y; row < batchEnd; ++row) {
      filterRow(row, batch.get() + size_t(row - y) * rowBytes);
    }
    const std::span raw(batch.get(), size_t(batchEnd - y) * rowBytes);
    strip.checksum = adler32_z(strip.checksum, raw.data(), raw.size());
    const int atEnd = isLast ? Z_FINISH : Z_SYNC_FLUSH;  // the flush ends on a whole byte
    if (!deflater.add(raw, batchEnd == end ? atEnd : Z_NO_FLUSH)) return false;
  }
  strip.byteCount = before + deflater.written();
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

std::vector<std::span<const uint8_t>> DeflateStrips::finish() {
  unsigned long checksum = adler32(0, nullptr, 0);
  for (const Strip& strip : strips_) {
    checksum = adler32_combine(checksum, strip.checksum, z_off_t(strip.rawByteCount));
  }
  Strip& last = strips_.back();
  for (int shift = 24; shift >= 0; shift -= 8) {
    last.bytes[last.byteCount++] = uint8_t(checksum >> shift);
  }
  std::vector<std::span<const uint8_t>> pieces;
  for (const Strip& strip : strips_) pieces.emplace_back(strip.bytes.get(), strip.byteCount);
  return pieces;
}

void DeflateStrips::filterRow(int32_t y, uint8_t* target) const {
  const uint8_t* pixel = picture_.data() + size_t(y) * picture_.bytesPerRow();
  *target++ = kFilterSub;
  target[0] = pixel[2];  // blue, green, red in memory; red, green, blue in the file
  target[1] = pixel[1];
  target[2] = pixel[0];
  for (int32_t x = 1; x < picture_.size().width; ++x) {
    pixel += 4;
    target += 3;
    target[0] = uint8_t(pixel[2] - pixel[-2]);
    target[1] = uint8_t(pixel[1] - pixel[-3]);
    target[2] = uint8_t(pixel[0] - pixel[-4]);
  }
}

}  // namespace tessary
