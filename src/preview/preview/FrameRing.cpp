#include "preview/FrameRing.h"

#include <utility>

namespace tessary {

bool FrameRing::push(Frame frame) {
  // What makes room, in `frame` at the end, goes outside the lock: it may be the last reference.
  std::array<Frame, kSlots> dropped;
  const std::lock_guard lock(mutex_);
  const Frame& newest = _cvTextures[size_t(_cvLastTexture)];
  const bool runStarts = !newest || newest->size() != frame->size();
  if (runStarts) startRun(dropped);
  int32_t next = _cvLastTexture + 1;
  if (next >= kSlots) next = 0;
  _cvTextures[size_t(next)].swap(frame);
  _cvLastTexture = next;
  ++sequence_;
  return runStarts;
}

void FrameRing::clear() {
  std::array<Frame, kSlots> dropped;
  const std::lock_guard lock(mutex_);
  startRun(dropped);
}

void FrameRing::startRun(std::array<Frame, kSlots>& dropped) {
  _cvTextures.swap(dropped);
  _cvLastTexture = 0;
  ++run_;
}

FrameRing::Newest FrameRing::newest() const {
  const std::lock_guard lock(mutex_);
  return {_cvTextures[size_t(_cvLastTexture)], sequence_, run_};
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
