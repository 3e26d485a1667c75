#include "preview/FrameRing.h"

#include <utility>

namespace tessary {

void FrameRing::push(Frame frame) {
  {
    const std::lock_guard lock(mutex_);
    int32_t next = _cvLastTexture + 1;
    if (next >= kSlots) next = 0;
    _cvTextures[size_t(next)].swap(frame);
    _cvLastTexture = next;
    ++sequence_;
  }
  // The frame that made room goes here, outside the lock: it may be the last reference.
}

void FrameRing::clear() {
  std::array<Frame, kSlots> dropped;
  const std::lock_guard lock(mutex_);
  _cvTextures.swap(dropped);
  _cvLastTexture = 0;
}

FrameRing::Newest FrameRing::newest() const {
  const std::lock_guard lock(mutex_);
  return {_cvTextures[size_t(_cvLastTexture)], sequence_};
}

FrameRing::Frame FrameRing::slot(int32_t index) const {
  const std::lock_guard lock(mutex_);
  return _cvTextures.at(size_t(index));
}

int32_t FrameRing::cvLastTexture() const {
  const std::lock_guard lock(mutex_);
  return _cvLastTexture;
}

}  // namespace tessary
