#include "base/PixelBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace tessary {
namespace {

// What a stream has in flight: three in the ring, one on its way, a few at the recorder.
constexpr size_t kIdleBuffersKept = 8;

uint8_t* allocateAligned(size_t bytes) {
  const size_t rounded = std::max<size_t>((bytes + 63) / 64 * 64, 64);
  auto* block = static_cast<uint8_t*>(std::aligned_alloc(64, rounded));
  if (!block) throw std::bad_alloc();
  return block;
}

}  // namespace

void PixelBuffer::Free::operator()(uint8_t* block) const { std::free(block); }

PixelBuffer::PixelBuffer(TextureSize size)
    : size_{std::max(size.width, 0), std::max(size.height, 0)},
      data_(allocateAligned(byteCount())) {}

PixelBufferPool::PixelBufferPool() : shelf_(std::make_shared<Shelf>()) {
  shelf_->idle.reserve(kIdleBuffersKept);  // so that taking one back can't fail
}

std::shared_ptr<PixelBuffer> PixelBufferPool::take(TextureSize size) {
  std::unique_ptr<PixelBuffer> buffer;
  {
    const std::lock_guard lock(shelf_->mutex);
    auto& idle = shelf_->idle;
    std::erase_if(idle, [&](const auto& kept) { return kept->size() != size; });
    if (!idle.empty()) {
      buffer = std::move(idle.back());
      idle.pop_back();
    }
  }
  if (!buffer) buffer = std::make_unique<PixelBuffer>(size);
  return {buffer.release(), [shelf = shelf_](PixelBuffer* returned) {
            std::unique_ptr<PixelBuffer> owned(returned);
            const std::lock_guard lock(shelf->mutex);
            if (shelf->idle.size() < kIdleBuffersKept) shelf->idle.push_back(std::move(owned));
          }};
}

}  // namespace tessary
