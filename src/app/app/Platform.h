#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/Clock.h"
#include "platform/AssetWriter.h"
#include "platform/CaptureSystem.h"
#include "platform/Compositor.h"
#include "platform/FrameDecoder.h"
#include "platform/ImageEncoder.h"
#include "platform/KeyValueStore.h"
#include "platform/Renderer.h"
#include "platform/TextRasterizer.h"
#include "qt/QtMainQueue.h"

namespace tessary {

/// Everything that the program asks of its platform. Needs a QApplication.
struct Platform {
  /// Text, graphics and files; whoever makes it brings the store and the cameras.
  Platform();
  /// The real one of a program called `name`: real cameras, and the user's own settings.
  explicit Platform(const std::string& name);

  QtMainQueue mainQueue;
  std::unique_ptr<KeyValueStore> store;
  std::unique_ptr<TextRasterizer> textRasterizer;
  Renderer renderer = Renderer::kRaster;
  std::unique_ptr<Compositor> openGlCompositor;
  std::unique_ptr<Compositor> rasterCompositor;
  std::unique_ptr<ImageEncoder> jpegEncoder;
  std::unique_ptr<ImageEncoder> pngEncoder;
  AssetWriterFactory makeAssetWriter;
  SystemClock clock;
  std::unique_ptr<CaptureSystem> captureSystem;
  /// Defaults that are registered over the program's own; not stored.
  std::vector<KeyValueStore::Entry> defaults;
};

/// Decoders for everything that cameras send.
FrameDecoderFactory frameDecoders();
/// Compresses as cameras do, for one that is simulated.
std::shared_ptr<ImageEncoder> cameraEncoder();

}  // namespace tessary
