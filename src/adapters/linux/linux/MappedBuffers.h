#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "linux/VideoNode.h"

namespace tessary {

/// The driver's frame buffers, mapped into this process: owns the mappings.
class MappedBuffers {
 public:
  explicit MappedBuffers(const VideoNode& node) : node_(node) {}
  ~MappedBuffers() { unmap(); }
  MappedBuffers(const MappedBuffers&) = delete;
  MappedBuffers& operator=(const MappedBuffers&) = delete;

  /// Asks the driver for buffers in place of those it had, maps them and queues them all. The
  /// stream must be off. 0, or the errno of what failed.
  int allocate();
  /// Gives the buffer back to the driver to be filled again. 0 or the errno.
  int queue(uint32_t index) const;
  void unmap() noexcept;

  size_t size() const noexcept { return buffers_.size(); }
  std::span<const uint8_t> operator[](uint32_t index) const { return buffers_[index]; }

 private:
  const VideoNode& node_;
  std::vector<std::span<uint8_t>> buffers_;
};

}  // namespace tessary
