// What saving a still holds the main thread up for, at 1920 by 1080: from pixels in memory to the
// whole file under its name, beside the bare encoder on the same pixels (TurboJPEG; libpng at level
// 1 with the SUB filter), measured in the same run. The pictures are the simulated microscope's: as
// drawn, with all of their grain, and as they come out of a camera's motion JPEG.
//
//   still_bench [rounds] [folder]

#include <algorithm>
#include <chrono>
#include <csetjmp>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <png.h>
#include <turbojpeg.h>
#include <unistd.h>

#include "FakeFailureListener.h"
#include "ManualExecutor.h"
#include "base/Number.h"
#include "jpeg/JpegImageEncoder.h"
#include "output/StillImage.h"
#include "png/PngImageEncoder.h"
#include "simulated/SimulatedScene.h"

namespace tessary {
namespace {

constexpr TextureSize kSize{1920, 1080};
constexpr int kWarmUp = 3;
constexpr int kCameraQuality = 90;

double threadCpuMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

double quantile(std::vector<double> values, double part) {
  std::ranges::sort(values);
  return values[size_t(double(values.size() - 1) * part)];
}

struct Step {
  std::string name;
  std::function<size_t()> run;  // answers the number of bytes made
  size_t bytes = 0;
  std::vector<double> wall;  // milliseconds
  std::vector<double> cpu;   // of the calling thread
};

/// Runs the steps in turns, so that what else the machine does meets all of them alike.
void measure(std::vector<Step>& steps, int rounds) {
  for (int round = -kWarmUp; round < rounds; ++round) {
    for (Step& step : steps) {
      const double cpu = threadCpuMilliseconds();
      const auto start = std::chrono::steady_clock::now();
      step.bytes = step.run();
      const std::chrono::duration<double, std::milli> wall =
          std::chrono::steady_clock::now() - start;
      if (round < 0) continue;
      step.wall.push_back(wall.count());
      step.cpu.push_back(threadCpuMilliseconds() - cpu);
    }
  }
}

class TurboJpeg {
 public:
  ~TurboJpeg() {
    tjDestroy(compressor_);
    tjFree(bytes_);
  }
  size_t encode(const PixelBuffer& picture, int subsampling, int quality) {
    const auto [width, height] = picture.size();
    tjCompress2(compressor_, picture.data(), width, 0, height, TJPF_BGRX, &bytes_, &byteCount_,
                subsampling, quality, 0);
    return byteCount_;
  }
  const unsigned char* bytes() const { return bytes_; }

 private:
  tjhandle compressor_ = tjInitCompress();
  unsigned char* bytes_ = nullptr;
  unsigned long byteCount_ = 0;
};

size_t encodeWithLibpng(const PixelBuffer& picture) {
  static std::vector<uint8_t> file;
  file.clear();
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  if (setjmp(png_jmpbuf(png)) != 0) std::abort();
  png_set_write_fn(
      png, &file,
      [](png_structp writer, png_bytep bytes, size_t count) {
        auto& target = *static_cast<std::vector<uint8_t>*>(png_get_io_ptr(writer));
        target.insert(target.end(), bytes, bytes + count);
      },
      nullptr);
  png_set_IHDR(png, info, kSize.width, kSize.height, 8, PNG_COLOR_TYPE_RGB, 0, 0, 0);
  png_set_compression_level(png, 1);
  png_set_filter(png, 0, PNG_FILTER_SUB);
  png_write_info(png, info);
  png_set_bgr(png);
  png_set_filler(png, 0, PNG_FILLER_AFTER);
  for (int32_t y = 0; y < kSize.height; ++y) {
    png_write_row(png, picture.data() + size_t(y) * picture.bytesPerRow());
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return file.size();
}

/// What a camera makes of the picture.
PixelBuffer throughCamera(const PixelBuffer& picture) {
  TurboJpeg camera;
  const size_t byteCount = camera.encode(picture, TJSAMP_422, kCameraQuality);
  PixelBuffer decoded(kSize);
  const tjhandle decompressor = tjInitDecompress();
  tjDecompress2(decompressor, camera.bytes(), byteCount, decoded.data(), kSize.width, 0,
                kSize.height, TJPF_BGRA, 0);
  tjDestroy(decompressor);
  return decoded;
}

void bench(const std::string& title, const PixelBuffer& picture, const std::string& folder,
           int rounds) {
  TurboJpeg bare;
  JpegImageEncoder jpeg;
  PngImageEncoder png;
  test::ManualExecutor mainQueue;  // nobody reads what is told
  test::FakeFailureListener failures;
  StillImage still(jpeg, png, mainQueue, failures);
  const auto save = [&](const std::string& name, int32_t imagePNG) {
    if (!still.saveImageFile(folder, name, imagePNG, picture, {})) std::exit(1);
    return size_t(std::filesystem::file_size(std::filesystem::path(folder) / name));
  };
  std::vector<Step> steps{
      {"TurboJPEG, quality 80, 4:2:0", [&] { return bare.encode(picture, TJSAMP_420, 80); }},
      {"TurboJPEG, quality 80, 4:4:4", [&] { return bare.encode(picture, TJSAMP_444, 80); }},
      {"JPEG still, whole file", [&] { return save("still_bench.jpg", 0); }},
      {"libpng, level 1, SUB", [&] { return encodeWithLibpng(picture); }},
      {"PNG encoder alone", [&] { return png.encode(picture).size(); }},
      {"PNG still, whole file", [&] { return save("still_bench.png", 1); }},
  };
  measure(steps, rounds);
  std::filesystem::remove(std::filesystem::path(folder) / "still_bench.jpg");
  std::filesystem::remove(std::filesystem::path(folder) / "still_bench.png");

  fmt::print("{}, {} rounds, files in {}\n", title, rounds, folder);
  fmt::print("{:32}{:>9}{:>9}{:>9}{:>14}{:>9}\n", "milliseconds", "least", "median", "90 %",
             "thread's CPU", "kB");
  for (const Step& step : steps) {
    fmt::print("{:32}{:9.1f}{:9.1f}{:9.1f}{:14.1f}{:9}\n", step.name, quantile(step.wall, 0.0),
               quantile(step.wall, 0.5), quantile(step.wall, 0.9), quantile(step.cpu, 0.5),
               step.bytes / 1000);
  }
  const auto ratio = [&](size_t step, size_t beside, double part) {
    return quantile(steps[step].wall, part) / quantile(steps[beside].wall, part);
  };
  fmt::print("ratio, least and median: JPEG {:.2f} {:.2f}, PNG {:.2f} {:.2f}\n\n", ratio(2, 1, 0.0),
             ratio(2, 1, 0.5), ratio(5, 3, 0.0), ratio(5, 3, 0.5));
}

}  // namespace
}  // namespace tessary

int main(int argc, char** argv) {
  using namespace tessary;
  const int rounds = argc > 1 ? std::max(intValue(argv[1]), 1) : 30;
  const std::string folder = argc > 2 ? argv[2] : "/tmp";
  const SimulatedScene scene(kSize, 8);
  PixelBuffer picture(kSize);
  scene.draw(1, picture);
  bench("As drawn", picture, folder, rounds);
  bench("Through a camera's motion JPEG", throughCamera(picture), folder, rounds);
}
