#include "app/Platform.h"

#include "base/FourCharCode.h"
#include "ffmpeg/FfmpegAssetWriter.h"
#include "jpeg/JpegFrameDecoder.h"
#include "jpeg/JpegImageEncoder.h"
#include "linux/V4l2CaptureSystem.h"
#include "opengl/GlCompositor.h"
#include "png/PngImageEncoder.h"
#include "qt/QtKeyValueStore.h"
#include "qt/QtTextRasterizer.h"
#include "raster/RasterCompositor.h"
#include "yuv/YuvFrameDecoder.h"

namespace tessary {

FrameDecoderFactory frameDecoders() {
  return [](uint32_t mediaSubType) -> std::unique_ptr<FrameDecoder> {
    if (mediaSubType == kMediaSubTypeMJPEG) return std::make_unique<JpegFrameDecoder>();
    return YuvFrameDecoder::make(mediaSubType);
  };
}

std::shared_ptr<ImageEncoder> cameraEncoder() {
  return std::make_shared<JpegImageEncoder>(JpegImageEncoder::kCameraFrame);
}

Platform::Platform()
    : textRasterizer(std::make_unique<QtTextRasterizer>()),
      openGlCompositor(std::make_unique<GlCompositor>()),
      rasterCompositor(std::make_unique<RasterCompositor>()),
      jpegEncoder(std::make_unique<JpegImageEncoder>()),
      pngEncoder(std::make_unique<PngImageEncoder>()),
      makeAssetWriter(makeFfmpegAssetWriterFactory()) {}

Platform::Platform(const std::string& name) : Platform() {
  store = std::make_unique<QtKeyValueStore>(name, name);
  captureSystem = std::make_unique<V4l2CaptureSystem>(mainQueue, frameDecoders());
}

}  // namespace tessary
