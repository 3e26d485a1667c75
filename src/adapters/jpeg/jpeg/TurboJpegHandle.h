#pragma once

#include <memory>

#include <turbojpeg.h>

namespace tessary {

struct DestroyTurboJpeg {
  void operator()(void* handle) const noexcept { tjDestroy(handle); }
};

/// A compressor or decompressor of TurboJPEG; null where there was no memory for it.
using TurboJpegHandle = std::unique_ptr<void, DestroyTurboJpeg>;

}  // namespace tessary
