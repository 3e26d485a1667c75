#pragma once

#include <cstdint>
#include <string>

#include "base/PixelBuffer.h"
#include "output/FileSync.h"
#include "platform/ImageEncoder.h"

namespace tessary {

/// Saves pictures as image files. Main thread.
class StillImage {
 public:
  /// Both encoders must outlive it.
  StillImage(ImageEncoder& jpegEncoder, ImageEncoder& pngEncoder)
      : jpegEncoder_(jpegEncoder), pngEncoder_(pngEncoder) {}

  /// Writes `picture`, alpha ignored, to `fileName` in `folder` (UTF-8, absolute), in place of a
  /// file of that name: a PNG when `imagePNG` is not 0, otherwise a JPEG. The file is there, whole,
  /// when this returns. False when no file can be made in the folder. What goes wrong after that is
  /// only logged, and that the answer is true all the same is meant; so is it without a picture
  /// (0 by 0), of which nothing is written.
  bool saveImageFile(const std::string& folder, const std::string& fileName, int32_t imagePNG,
                     const PixelBuffer& picture);

 private:
  ImageEncoder& jpegEncoder_;
  ImageEncoder& pngEncoder_;
  FileSync fileSync_;
};

}  // namespace tessary
