#pragma once

#include <cstdint>
#include <vector>

#include "ffmpeg/AvHandles.h"

namespace tessary {

/// An output for libavformat that keeps what is written from some position on and forgets the rest.
class MemoryIo {
 public:
  MemoryIo();
  MemoryIo(const MemoryIo&) = delete;
  MemoryIo& operator=(const MemoryIo&) = delete;

  AVIOContext* io() const { return io_.get(); }
  /// Drops what was kept; from now on bytes at `position` and behind are kept.
  void keepFrom(int64_t position);
  /// What was kept. Bytes that were skipped in between are 0.
  std::vector<uint8_t> take();

 private:
  static int write(void* self, uint8_t* bytes, int count);
  static int64_t seek(void* self, int64_t offset, int whence);

  int64_t position_ = 0;
  int64_t end_ = 0;
  int64_t keptFrom_ = 0;
  std::vector<uint8_t> kept_;
  AvHandle<AVIOContext> io_;
};

}  // namespace tessary
