// What one display tick costs the graphics: upload, compose and present, with and without an
// overlay, beside the least that OpenGL can do for the same picture (a plain upload and a blit),
// measured in the same run. Without a graphics card the CPU does all of it, on several threads: CPU
// time then exceeds wall time.

#include <epoxy/gl.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "HeadlessContext.h"
#include "base/Number.h"
#include "opengl/GlCompositor.h"
#include "opengl/GlObject.h"

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

struct Step {
  std::string name;
  std::function<void(const PixelBuffer&)> run;
  std::vector<double> wall;
  std::vector<double> cpu;
  Cost cost() const { return {median(wall), median(cpu)}; }
};

/// Runs the steps in turns, so that what else the machine does meets all of them alike.
void measure(std::vector<Step>& steps, const std::vector<PixelBuffer>& frames, int rounds) {
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

std::vector<PixelBuffer> makeFrames(TextureSize size) {
  std::vector<PixelBuffer> frames;
  for (uint32_t f = 0; f < 3; ++f) {
    PixelBuffer& frame = frames.emplace_back(size);
    for (size_t i = 0; i < frame.byteCount(); ++i) {
      frame.data()[i] = i % 4 == 3 ? uint8_t(255) : uint8_t((i + f * 977) * 2654435761U >> 24);
    }
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

void benchSize(TextureSize size, int rounds) {
  const std::vector<PixelBuffer> frames = makeFrames(size);
  const std::vector<PointVertex> overlay = makeOverlay();
  const std::span lines = std::span(overlay).first(kOverlayVertices / 2);
  const std::span points = std::span(overlay).last(kOverlayVertices / 2);

  const Target surface(size);
  const Target source(size);
  GlCompositor compositor;
  compositor.initBufferResources(size);

  const auto present = [&](double scale) {
    glBindFramebuffer(GL_FRAMEBUFFER, surface.framebuffer.name());
    compositor.present({{0, 0}, {size.width * scale, size.height * scale}}, size);
  };
  const auto tick = [&](bool withOverlay, double scale) {
    return [&, withOverlay, scale](const PixelBuffer& frame) {
      if (withOverlay) {
        compositor.compose(frame, lines, points);
      } else {
        compositor.compose(frame, {}, {});
      }
      present(scale);
    };
  };
  PixelBuffer still(size);
  std::vector<Step> steps;
  steps.push_back({"bare upload + blit", [&](const PixelBuffer& frame) {
                     glBindTexture(GL_TEXTURE_2D, source.texture.name());
                     glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, size.width, size.height, GL_RGBA,
                                     GL_UNSIGNED_BYTE, frame.data());
                     glBindFramebuffer(GL_READ_FRAMEBUFFER, source.framebuffer.name());
                     glBindFramebuffer(GL_DRAW_FRAMEBUFFER, surface.framebuffer.name());
                     glBlitFramebuffer(0, 0, size.width, size.height, 0, size.height, size.width, 0,
                                       GL_COLOR_BUFFER_BIT, GL_NEAREST);
                   }});
  steps.push_back({"tick", tick(false, 1.0)});
  steps.push_back({"tick, 5000 vertices", tick(true, 1.0)});
  steps.push_back({"tick, 5000, at 50 %", tick(true, 0.5)});
  steps.push_back({"tick, 5000, at 150 %", tick(true, 1.5)});
  steps.push_back({"present alone", [&](const PixelBuffer&) { present(1.0); }});
  steps.push_back({"compose alone, 5000",
                   [&](const PixelBuffer& frame) { compositor.compose(frame, lines, points); }});
  steps.push_back({"read back", [&](const PixelBuffer&) { compositor.readBack(still); }});
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
