#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "base/Executor.h"
#include "base/FailurePost.h"
#include "base/FileCalls.h"
#include "base/PixelBuffer.h"
#include "base/SerialQueue.h"
#include "output/StillInfo.h"
#include "platform/ImageEncoder.h"

namespace tessary {

/// Saves pictures as image files. The disk is touched on a thread of its own, which is left to
/// itself when the disk does not answer. Main thread.
class StillImage {
 public:
  /// All must outlive it, `calls` also its thread.
  StillImage(ImageEncoder& jpegEncoder, ImageEncoder& pngEncoder, Executor& mainQueue,
             FailureListener& failures, FileCalls& calls = FileCalls::system(),
             std::chrono::milliseconds answerLimit = kDiskAnswerLimit);
  /// Waits for what is being written, within the limit.
  ~StillImage();
  StillImage(const StillImage&) = delete;
  StillImage& operator=(const StillImage&) = delete;

  /// Writes `picture`, alpha ignored, with what `info` says of it, to `fileName` in `folder`
  /// (UTF-8, absolute), in place of a file of that name: a PNG when `imagePNG` is not 0, otherwise
  /// a JPEG. The file is there, whole, when this returns, unless the disk takes longer to write it
  /// than the limit. False when no file can be made in the folder, or the disk does not say so
  /// within the limit. What goes wrong after that leaves the answer true, which is meant; so does a
  /// picture that is none (0 by 0), of which nothing is written. All of it is logged, and told as
  /// Failure::StillNotSaved.
  bool saveImageFile(const std::string& folder, const std::string& fileName, int32_t imagePNG,
                     const PixelBuffer& picture, const StillInfo& info);

 private:
  struct Saving;
  struct Disk;

  bool saveWithin(const std::shared_ptr<Saving>& saving);
  bool notSaved(const Saving& saving, const std::string& logged, const std::string& told);

  ImageEncoder& jpegEncoder_;
  ImageEncoder& pngEncoder_;
  const std::chrono::milliseconds answerLimit_;
  FailurePost failures_;
  const std::shared_ptr<Disk> disk_;  // shared with the thread
  std::unique_ptr<SerialQueue> queue_;
  std::shared_ptr<Saving> late_;  // what the disk did not answer in time
};

}  // namespace tessary
