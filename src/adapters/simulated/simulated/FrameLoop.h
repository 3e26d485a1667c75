#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/CaptureSystem.h"
#include "platform/ImageEncoder.h"
#include "simulated/SimulatedScene.h"

namespace tessary {

/// The frames that the simulated microscope sends in one format, over and over, as the bytes that a
/// camera would send. Each is drawn and encoded when it is first asked for, so that the first one
/// is there quickly and replaying costs nothing. One thread at a time.
class FrameLoop {
 public:
  /// `format` is 'dmb1', 'yuvs' or '420v'; `encoder` makes the frames of 'dmb1'.
  FrameLoop(const CaptureFormat& format, std::shared_ptr<ImageEncoder> encoder);
  ~FrameLoop();
  FrameLoop(const FrameLoop&) = delete;
  FrameLoop& operator=(const FrameLoop&) = delete;

  const CaptureFormat& format() const { return format_; }
  size_t frameCount() const { return frames_.size(); }
  /// Of the frames' rows, or of either plane's; 0 for 'dmb1', which has none.
  size_t bytesPerRow() const;
  /// Frame `index` modulo frameCount(). Empty only when the encoder fails.
  std::span<const uint8_t> frame(size_t index);

 private:
  /// What is needed until the last frame is encoded.
  struct Renderer;

  std::vector<uint8_t> encoded(size_t index);

  CaptureFormat format_;
  std::shared_ptr<ImageEncoder> encoder_;
  std::vector<std::vector<uint8_t>> frames_;  // empty ones are yet to be made
  size_t missing_ = 0;
  std::unique_ptr<Renderer> renderer_;
};

}  // namespace tessary
