// Makes the pictures that the virtual microscope sends.   pictures FOLDER
// FOLDER/WxH.mjpeg/NN.jpg and FOLDER/WxH.yuyv/NN.yuyv, NN being the number in the picture's strip.
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <ios>
#include <vector>

#include <fmt/format.h>

#include "pictures/Encoding.h"
#include "pictures/Specimen.h"

namespace {

using namespace tessary::lab;
namespace fs = std::filesystem;

constexpr Size kSizes[] = {{320, 240}, {640, 480}, {1280, 720}, {1920, 1080}};
constexpr uint16_t kMjpegPictures = 30;
constexpr uint16_t kYuyvPictures = 4;  // they are large

void write(const fs::path& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
  file.close();
}

void makePictures(const fs::path& folder) {
  for (const Size size : kSizes) {
    const fs::path mjpeg = folder / fmt::format("{}x{}.mjpeg", size.width, size.height);
    const fs::path yuyv = folder / fmt::format("{}x{}.yuyv", size.width, size.height);
    fs::create_directories(mjpeg);
    fs::create_directories(yuyv);
    const Specimen specimen(size);
    for (uint16_t number = 0; number < kMjpegPictures; ++number) {
      const Canvas picture = specimen.picture(number);
      write(mjpeg / fmt::format("{:02}.jpg", number), encodeJpeg(picture));
      if (number < kYuyvPictures)
        write(yuyv / fmt::format("{:02}.yuyv", number), encodeYuyv(picture));
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "usage: pictures FOLDER\n");
    return 2;
  }
  try {
    makePictures(argv[1]);
  } catch (const std::exception& error) {
    fmt::print(stderr, "pictures: {}\n", error.what());
    return 1;
  }
}
