#include "screen/FrameBuffer.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <ios>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessary::lab {
namespace {

// Fields of an X window dump's header: 32 bits each, highest byte first.
enum Field : size_t {
  kHeaderSize = 0,
  kWidth = 4,
  kHeight = 5,
  kByteOrder = 7,
  kBitsPerPixel = 11,
  kBytesPerLine = 12,
  kRedMask = 14,
  kColors = 19,
  kFields = 25,
};
constexpr size_t kColorBytes = 12;
constexpr uint32_t kLowestByteFirst = 0;

std::span<const std::byte> mapFile(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) throw std::runtime_error(fmt::format("{}: {}", path, std::strerror(errno)));
  struct stat status {};
  void* memory = MAP_FAILED;
  if (fstat(fd, &status) == 0 && status.st_size > 0)
    memory = mmap(nullptr, size_t(status.st_size), PROT_READ, MAP_SHARED, fd, 0);
  close(fd);
  if (memory == MAP_FAILED) throw std::runtime_error(fmt::format("{} can't be mapped", path));
  return {static_cast<const std::byte*>(memory), size_t(status.st_size)};
}

void unmap(std::span<const std::byte> file) {
  munmap(const_cast<std::byte*>(file.data()), file.size());
}

}  // namespace

FrameBuffer::FrameBuffer(const std::string& path) : file_(mapFile(path)) {
  if (file_.size() >= kFields * sizeof(uint32_t)) {
    pixels_ = headerField(kHeaderSize) + headerField(kColors) * kColorBytes;
    rowBytes_ = headerField(kBytesPerLine);
    size_ = {int(headerField(kWidth)), int(headerField(kHeight))};
  }
  const bool readable = pixels_ > 0 && headerField(kBitsPerPixel) == 32 &&
                        headerField(kByteOrder) == kLowestByteFirst &&
                        headerField(kRedMask) == 0xFF0000 &&
                        pixels_ + rowBytes_ * size_t(size_.height) <= file_.size();
  if (readable) return;
  unmap(file_);
  throw std::runtime_error(fmt::format("{} is no screen of 24 bits a pixel", path));
}

FrameBuffer::~FrameBuffer() { unmap(file_); }

uint32_t FrameBuffer::headerField(size_t index) const {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) value = value << 8 | uint32_t(file_[index * 4 + i]);
  return value;
}

uint32_t FrameBuffer::pixel(int x, int y) const {
  uint32_t value = 0;
  std::memcpy(&value, file_.data() + pixels_ + size_t(y) * rowBytes_ + size_t(x) * 4, sizeof value);
  return value & 0xFFFFFF;
}

void FrameBuffer::save(const std::string& path) const {
  std::string text = fmt::format("P6\n{} {}\n255\n", size_.width, size_.height);
  for (int y = 0; y < size_.height; ++y) {
    for (int x = 0; x < size_.width; ++x) {
      const uint32_t color = pixel(x, y);
      text += {char(color >> 16), char(color >> 8), char(color)};
    }
  }
  std::ofstream file(path, std::ios::binary);
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file << text;
  file.close();
}

}  // namespace tessary::lab
