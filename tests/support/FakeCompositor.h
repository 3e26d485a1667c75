#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/Compositor.h"

namespace tessary::test {

/// Draws nothing, and writes down what it is asked for. It takes frames of its own size only, as
/// the graphics do.
class FakeCompositor final : public Compositor {
 public:
  void initBufferResources(TextureSize size) override {
    calls.push_back(fmt::format("init {}x{}", size.width, size.height));
    size_ = refuse ? TextureSize{} : size;
  }
  void clearBufferResources() override {
    calls.emplace_back("clear");
    size_ = {};
  }
  bool hasBufferResources() const override { return size_ != TextureSize{}; }
  void contextWillBeDestroyed() override {
    calls.emplace_back("drop all");
    size_ = {};
  }
  void contextWasLost() override {
    calls.emplace_back("lost");
    size_ = {};
  }
  void setFrame(std::shared_ptr<const PixelBuffer> frame) override {
    EXPECT_EQ(frame->size(), size_);
    frame_ = std::move(frame);
    ++frames;
  }
  void compose(std::span<const PointVertex> lines, std::span<const PointVertex> points) override {
    calls.push_back(fmt::format("compose {} lines {} points {}", frame_->data()[0], lines.size(),
                                points.size()));
    composed.push_back(frame_->size());
    lineCount = lines.size();
  }
  void present(const SurfaceRect& picture, const Surface&) override {
    calls.push_back(fmt::format("present {},{} {}x{}", picture.origin.x, picture.origin.y,
                                picture.size.width, picture.size.height));
    ++presented;
  }
  bool readBack(PixelBuffer&) override {
    calls.emplace_back("readBack");
    return hasBufferResources() && readsBack;
  }

  std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

  bool refuse = false;    ///< Every size.
  bool readsBack = true;  ///< What was composed.
  std::vector<std::string> calls;
  std::vector<TextureSize> composed;
  size_t frames = 0;  ///< That were handed over.
  size_t presented = 0;
  size_t lineCount = 0;  ///< Of the last composition.

 private:
  TextureSize size_;
  std::shared_ptr<const PixelBuffer> frame_;
};

}  // namespace tessary::test
