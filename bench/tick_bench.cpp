// What one display tick costs: taking the frame, composing and presenting, with and without an
// overlay, by OpenGL and by the processor alone, beside the least that OpenGL can do for the same
// picture (a plain upload and a blit), all measured in the same run. Without a graphics card the
// CPU does OpenGL's part too, on several threads: CPU time then exceeds wall time. The raster's
// window is memory of this process: what brings it to the screen is the same for both and not in
// here.

#include <epoxy/gl.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "HeadlessContext.h"
#include "base/Number.h"
#include "opengl/GlCompositor.h"
#include "opengl/GlObject.h"
#include "raster/RasterCompositor.h"

namespace tessary {
namespace {

constexpr size_t kOverlayVertices = 5000;
constexpr int kWarmUp = 5;

struct Cost {
  double wall;  // milliseconds, median
  double cpu;   // milliseconds of all threads, median
};

double cpuMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

using Frame = std::shared_ptr<const PixelBuffer>;

struct Step {
  std::string name;
  std::function<void(const Frame&)> run;
  std::vector<double> wall;
  std::vector<double> cpu;
  Cost cost() const { return {median(wall), median(cpu)}; }
};

/// Runs the steps in turns, so that what else the machine does meets all of them alike.
void measure(std::vector<Step>& steps, const std::vector<Frame>& frames, int rounds) {
  for (int round = 0; round < rounds + kWarmUp; ++round) {
    for (Step& step : steps) {
      glFinish();
      const double cpu = cpuMilliseconds();
      const auto start = std::chrono::steady_clock::now();
      step.run(frames[size_t(round) % frames.size()]);
      glFinish();
      const std::chrono::duration<double, std::milli> wall =
          std::chrono::steady_clock::now() - start;
      if (round < kWarmUp) continue;
      step.wall.push_back(wall.count());
      step.cpu.push_back(cpuMilliseconds() - cpu);
    }
  }
}

/// A texture of `size` with a framebuffer over it: a window's surface, or what is blitted from.
struct Target {
  explicit Target(TextureSize targetSize) : size(targetSize) {
    glBindTexture(GL_TEXTURE_2D, texture.name());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, size.width, size.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer.name());
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name(), 0);
  }
  TextureSize size;
  GlTexture texture;
  GlFramebuffer framebuffer;
};

std::vector<Frame> makeFrames(TextureSize size) {
  std::vector<Frame> frames;
  for (uint32_t f = 0; f < 3; ++f) {
    auto frame = std::make_shared<PixelBuffer>(size);
    for (size_t i = 0; i < frame->byteCount(); ++i) {
      frame->data()[i] = i % 4 == 3 ? uint8_t(255) : uint8_t((i + f * 977) * 2654435761U >> 24);
    }
    frames.push_back(std::move(frame));
  }
  return frames;
}

/// Half of them short lines, as of circles, half of them single pixels, as of text.
std::vector<PointVertex> makeOverlay() {
  std::vector<PointVertex> vertices;
  for (size_t i = 0; i < kOverlayVertices; ++i) {
    const size_t place = i < kOverlayVertices / 2 ? i / 2 : i;
    const float x = float(place * 37 % 1000) / 501.0F - 1.0F + float(i % 2) * 0.01F;
    const float y = float(place * 91 % 1000) / 501.0F - 1.0F + float(i % 2) * 0.01F;
    vertices.push_back({{x, y, 0.0F, 1.0F}, {1.0F, 0.2F, 0.1F, 1.0F}});
  }
  return vertices;
}

/// The ticks of one adapter: `present` draws its composed picture, so many times as large.
void addTicks(std::vector<Step>& steps, const std::string& name, Compositor& compositor,
              TextureSize size, const std::vector<PointVertex>& overlay,
              const std::function<void(double)>& present) {
  const std::span lines = std::span(overlay).first(kOverlayVertices / 2);
  const std::span points = std::span(overlay).last(kOverlayVertices / 2);
  const auto tick = [&compositor, lines, points, present](bool withOverlay, double scale) {
    return [&compositor, lines, points, present, withOverlay, scale](const Frame& frame) {
      compositor.setFrame(frame);
      if (withOverlay) {
        compositor.compose(lines, points);
      } else {
        compositor.compose({}, {});
      }
      present(scale);
    };
  };
  for (const double scale : {0.5, 1.0, 1.5}) {
    steps.push_back({fmt::format("{} at {:.0f} %", name, scale * 100), tick(false, scale)});
    steps.push_back({fmt::format("{} at {:.0f} %, 5000", name, scale * 100), tick(true, scale)});
  }
  steps.push_back({name + " overlay alone", [&compositor, lines, points, present](const Frame&) {
                     compositor.compose(lines, points);
                     present(1.0);
                   }});
  steps.push_back({name + " present alone", [present](const Frame&) { present(1.0); }});
  const auto still = std::make_shared<PixelBuffer>(size);
  steps.push_back(
      {name + " read back", [&compositor, still](const Frame&) { compositor.readBack(*still); }});
}

void benchSize(TextureSize size, int rounds) {
  const std::vector<Frame> frames = makeFrames(size);
  const std::vector<PointVertex> overlay = makeOverlay();
  const Target surface(size);
  const Target source(size);
  PixelBuffer window(size);
  GlCompositor openGl;
  RasterCompositor raster;
  openGl.initBufferResources(size);
  raster.initBufferResources(size);

  std::vector<Step> steps;
  steps.push_back({"bare upload + blit", [&](const Frame& frame) {
                     glBindTexture(GL_TEXTURE_2D, source.texture.name());
                     glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, size.width, size.height, GL_RGBA,
                                     GL_UNSIGNED_BYTE, frame->data());
                     glBindFramebuffer(GL_READ_FRAMEBUFFER, source.framebuffer.name());
                     glBindFramebuffer(GL_DRAW_FRAMEBUFFER, surface.framebuffer.name());
                     glBlitFramebuffer(0, 0, size.width, size.height, 0, size.height, size.width, 0,
                                       GL_COLOR_BUFFER_BIT, GL_NEAREST);
                   }});
  const auto pictureOf = [size](double scale) {
    return SurfaceRect{{0, 0}, {size.width * scale, size.height * scale}};
  };
  addTicks(steps, "opengl", openGl, size, overlay, [&](double scale) {
    glBindFramebuffer(GL_FRAMEBUFFER, surface.framebuffer.name());
    openGl.present(pictureOf(scale), Surface::framebuffer(size));
  });
  addTicks(steps, "raster", raster, size, overlay, [&](double scale) {
    raster.present(pictureOf(scale), Surface::memory(size, window.data(), window.bytesPerRow(),
                                                     {0, 0, size.width, size.height}));
  });
  measure(steps, frames, rounds);

  const Cost bare = steps.front().cost();
  for (const Step& step : steps) {
    const Cost cost = step.cost();
    fmt::print("{:>4}x{:<5} {:<22} {:9.2f} {:9.2f} {:8.2f} {:8.2f}\n", size.width, size.height,
               step.name, cost.wall, cost.cpu, cost.wall / bare.wall, cost.cpu / bare.cpu);
  }
}

}  // namespace
}  // namespace tessary

/// tick_bench [ROUNDS]
int main(int argc, char** argv) {
  using namespace tessary;
  int rounds = 60;
  if (argc > 1) rounds = std::clamp(intValue(argv[1]), 1, 10000);
  const auto context = HeadlessContext::make();
  if (!context) return EXIT_FAILURE;
  fmt::print("{}, medians of {} rounds in milliseconds\n",
             std::string_view(reinterpret_cast<const char*>(glGetString(GL_RENDERER))), rounds);
  fmt::print("{:<10} {:<22} {:>9} {:>9} {:>8} {:>8}\n", "size", "step", "wall", "CPU", "x wall",
             "x CPU");
  for (const TextureSize size :
       {TextureSize{640, 480}, TextureSize{1280, 720}, TextureSize{1920, 1080}}) {
    benchSize(size, rounds);
  }
  return EXIT_SUCCESS;
}
