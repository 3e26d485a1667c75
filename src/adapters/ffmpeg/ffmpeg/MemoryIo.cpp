#include "ffmpeg/MemoryIo.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace tessary {
namespace {

constexpr int kBufferSize = 64 * 1024;

}  // namespace

MemoryIo::MemoryIo() {
  auto* buffer = static_cast<unsigned char*>(ffmpeg().av_malloc(kBufferSize));
  if (!buffer) throw std::bad_alloc();
  io_.reset(ffmpeg().avio_alloc_context(buffer, kBufferSize, 1, this, nullptr, &write, &seek));
  if (!io_) {
    ffmpeg().av_free(buffer);
    throw std::bad_alloc();
  }
}

void MemoryIo::keepFrom(int64_t position) {
  ffmpeg().avio_flush(io_.get());
  keptFrom_ = position;
  kept_.clear();
}

std::vector<uint8_t> MemoryIo::take() {
  ffmpeg().avio_flush(io_.get());
  keptFrom_ = position_;
  return std::exchange(kept_, {});
}

int MemoryIo::write(void* self, uint8_t* bytes, int count) try {
  MemoryIo& io = *static_cast<MemoryIo*>(self);
  const int64_t begin = std::max(io.position_, io.keptFrom_);
  const int64_t end = io.position_ + count;
  if (begin < end) {
    const auto wanted = size_t(end - io.keptFrom_);
    if (io.kept_.size() < wanted) io.kept_.resize(wanted);
    std::copy(bytes + (begin - io.position_), bytes + count,
              io.kept_.begin() + (begin - io.keptFrom_));
  }
  io.position_ = end;
  io.end_ = std::max(io.end_, end);
  return count;
} catch (const std::bad_alloc&) {
  return AVERROR(ENOMEM);  // no exception may pass through libavformat
}

int64_t MemoryIo::seek(void* self, int64_t offset, int whence) {
  MemoryIo& io = *static_cast<MemoryIo*>(self);
  switch (whence) {
    case AVSEEK_SIZE: return io.end_;
    case SEEK_SET: io.position_ = offset; break;
    case SEEK_CUR: io.position_ += offset; break;
    default: return AVERROR(EINVAL);
  }
  return io.position_;
}

}  // namespace tessary
