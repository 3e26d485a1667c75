#include "png/PngImageEncoder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csetjmp>
#include <span>
#include <string_view>
#include <system_error>
#include <thread>

#include <png.h>

#include "png/DeflateStrips.h"

namespace tessary {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr unsigned kMostThreads = 4;
constexpr int32_t kLargestSide = 1'000'000;  // libpng's own limit
constexpr std::array<png_byte, 5> kDataChunk{'I', 'D', 'A', 'T', 0};
constexpr std::array<png_byte, 5> kEndChunk{'I', 'E', 'N', 'D', 0};
constexpr size_t kChunkFrame = 12;                // length, name and checksum
constexpr size_t kHeader = 8 + kChunkFrame + 13;  // signature and IHDR
constexpr int kUnused = 0;                        // no interlacing, the only methods there are
constexpr size_t kMostXmp = 1'000'000;            // far below where readers begin to refuse texts
constexpr std::string_view kXmpKeyword = "XML:com.adobe.xmp";
// The zero behind the keyword, two bytes that say "not compressed", and two empty texts.
constexpr size_t kTextFrame = kChunkFrame + kXmpKeyword.size() + 5;

/// Compresses all strips; this thread takes part, so that it goes on even if no other can be had.
bool compressAll(DeflateStrips& strips, unsigned threads) {
  std::atomic<size_t> next{0};
  std::atomic<bool> good{true};
  const auto work = [&] {
    for (size_t index = next++; index < strips.count() && good; index = next++) {
      if (!strips.compress(index)) good = false;
    }
  };
  {
    std::vector<std::jthread> workers;
    try {
      while (workers.size() + 1 < std::min<size_t>(threads, strips.count())) {
        workers.emplace_back(work);
      }
    } catch (const std::system_error&) {  // no more threads to be had
    }
    work();
  }
  return good;
}

void append(png_structp png, png_bytep bytes, size_t count) {
  auto& file = *static_cast<Bytes*>(png_get_io_ptr(png));
  // Within what was reserved, so that nothing is thrown through the library.
  if (count > file.capacity() - file.size()) png_error(png, "file too large");
  file.insert(file.end(), bytes, bytes + count);
}

class PngWriter {
 public:
  explicit PngWriter(Bytes& file)
      : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignore)),
        info_(png_ ? png_create_info_struct(png_) : nullptr) {
    if (png_) png_set_write_fn(png_, &file, append, nullptr);
  }
  ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  /// The whole file around the compressed rows. Nothing in here may need a destructor: the library
  /// leaves by a long jump when it fails.
  bool write(TextureSize size, const std::string& xmp,
             std::span<const std::span<const uint8_t>> rows) {
    if (!info_ || setjmp(png_jmpbuf(png_)) != 0) return false;
    png_set_IHDR(png_, info_, png_uint_32(size.width), png_uint_32(size.height), 8,
                 PNG_COLOR_TYPE_RGB, kUnused, kUnused, kUnused);
    if (!xmp.empty()) setXmp(xmp);
    png_write_info(png_, info_);
    for (const std::span<const uint8_t> piece : rows) {
      png_write_chunk(png_, kDataChunk.data(), piece.data(), piece.size());
    }
    png_write_chunk(png_, kEndChunk.data(), nullptr, 0);
    return true;
  }

 private:
  /// The library copies what it is given; it asks for texts that it might change, and doesn't.
  void setXmp(const std::string& xmp) {
    png_text text{};
    text.compression = PNG_ITXT_COMPRESSION_NONE;
    text.key = const_cast<png_charp>(kXmpKeyword.data());
    text.text = const_cast<png_charp>(xmp.c_str());
    text.itxt_length = xmp.size();
    png_set_text(png_, info_, &text, 1);
  }

  [[noreturn]] static void fail(png_structp png, png_const_charp /*text*/) { png_longjmp(png, 1); }
  static void ignore(png_structp /*png*/, png_const_charp /*text*/) {}

  png_structp png_;
  png_infop info_;
};

}  // namespace

PngImageEncoder::PngImageEncoder()
    : PngImageEncoder(std::min(std::thread::hardware_concurrency(), kMostThreads)) {}

PngImageEncoder::PngImageEncoder(unsigned threads) : threads_(std::max(threads, 1U)) {}

size_t PngImageEncoder::xmpRoom() const { return kMostXmp; }

std::vector<uint8_t> PngImageEncoder::encode(const PixelBuffer& picture, const std::string& xmp) {
  const auto [width, height] = picture.size();
  if (width <= 0 || height <= 0 || width > kLargestSide || height > kLargestSide) return {};
  DeflateStrips strips(picture);
  if (!compressAll(strips, threads_)) return {};

  const std::vector<std::span<const uint8_t>> rows = strips.finish();
  const std::string kept = xmp.size() <= kMostXmp ? xmp : std::string();
  size_t byteCount = kHeader + kChunkFrame + (kept.empty() ? 0 : kTextFrame + kept.size());
  for (const std::span<const uint8_t> piece : rows) byteCount += kChunkFrame + piece.size();
  Bytes file;
  file.reserve(byteCount);
  return PngWriter(file).write(picture.size(), kept, rows) ? file : Bytes{};
}

}  // namespace tessary
