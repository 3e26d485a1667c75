#include "base/PixelBuffer.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace tessary {
namespace {

// What a stream has in flight: three in the ring, one on its way, a few at the recorder.
constexpr size_t kIdleBuffersKept = 8;
/// What nobody needed for so many pictures, ten seconds' worth, is given back.
constexpr size_t kPicturesBetweenLooks = 300;

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

/// What is not lent out. Lives until the last buffer has come back.
struct PixelBufferPool::Shelf {
  std::mutex mutex;                                // guards all below
  std::vector<std::unique_ptr<PixelBuffer>> idle;  // the one returned last is lent out first
  size_t picturesSinceLook = 0;
  size_t fewestIdle = kIdleBuffersKept;  // since then
  std::vector<void*> counts;  // blocks for the reference counts of lent buffers, all of one size

  Shelf() {
    // So that taking something back can't fail.
    idle.reserve(kIdleBuffersKept);
    counts.reserve(kIdleBuffersKept);
  }
  /// To be called whenever one was lent out. What to give back, now and then.
  std::vector<std::unique_ptr<PixelBuffer>> unneeded() {
    fewestIdle = std::min(fewestIdle, idle.size());
    if (++picturesSinceLook < kPicturesBetweenLooks) return {};
    picturesSinceLook = 0;
    const auto end = idle.begin() + std::ptrdiff_t(std::exchange(fewestIdle, kIdleBuffersKept));
    std::vector<std::unique_ptr<PixelBuffer>> longIdle(std::make_move_iterator(idle.begin()),
                                                       std::make_move_iterator(end));
    idle.erase(idle.begin(), end);
    return longIdle;
  }
  ~Shelf() {
    for (void* block : counts) ::operator delete(block);
  }
};

/// Takes a buffer back.
struct PixelBufferPool::Return {
  std::shared_ptr<Shelf> shelf;

  void operator()(PixelBuffer* returned) const {
    std::unique_ptr<PixelBuffer> owned(returned);
    const std::lock_guard lock(shelf->mutex);
    if (shelf->idle.size() < kIdleBuffersKept) shelf->idle.push_back(std::move(owned));
  }
};

/// Keeps the block for a shared pointer's counts as the pool keeps buffers.
template <typename T>
struct PixelBufferPool::CountAllocator {
  using value_type = T;
  std::shared_ptr<Shelf> shelf;

  explicit CountAllocator(std::shared_ptr<Shelf> of) : shelf(std::move(of)) {}
  template <typename Other>
  CountAllocator(const CountAllocator<Other>& other) : shelf(other.shelf) {}

  T* allocate(size_t count) {
    void* block = nullptr;
    {
      const std::lock_guard lock(shelf->mutex);
      if (!shelf->counts.empty()) {
        block = shelf->counts.back();
        shelf->counts.pop_back();
      }
    }
    return static_cast<T*>(block ? block : ::operator new(count * sizeof(T)));
  }
  void deallocate(T* block, size_t) noexcept {
    {
      const std::lock_guard lock(shelf->mutex);
      if (shelf->counts.size() < kIdleBuffersKept) return shelf->counts.push_back(block);
    }
    ::operator delete(block);
  }
  template <typename Other>
  bool operator==(const CountAllocator<Other>& other) const {
    return shelf == other.shelf;
  }
};

PixelBufferPool::PixelBufferPool() : shelf_(std::make_shared<Shelf>()) {}

std::shared_ptr<PixelBuffer> PixelBufferPool::take(TextureSize size) {
  std::unique_ptr<PixelBuffer> buffer;
  std::vector<std::unique_ptr<PixelBuffer>> unneeded;  // goes without the lock
  {
    const std::lock_guard lock(shelf_->mutex);
    auto& idle = shelf_->idle;
    std::erase_if(idle, [&](const auto& kept) { return kept->size() != size; });
    if (!idle.empty()) {
      buffer = std::move(idle.back());
      idle.pop_back();
    }
    unneeded = shelf_->unneeded();
  }
  if (!buffer) buffer = std::make_unique<PixelBuffer>(size);
  return {buffer.release(), Return{shelf_}, CountAllocator<PixelBuffer>(shelf_)};
}

size_t PixelBufferPool::idleBuffers() const {
  const std::lock_guard lock(shelf_->mutex);
  return shelf_->idle.size();
}

}  // namespace tessary
