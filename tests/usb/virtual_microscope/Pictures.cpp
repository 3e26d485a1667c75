#include "virtual_microscope/Pictures.h"

#include <algorithm>
#include <fstream>
#include <ios>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

#include <fmt/format.h>

namespace tessary::lab {
namespace {

namespace fs = std::filesystem;

Bytes readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<Bytes> readFolder(const fs::path& folder) {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(folder)) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<Bytes> pictures;
  pictures.reserve(paths.size());
  for (const fs::path& path : paths) pictures.push_back(readFile(path));
  return pictures;
}

VideoFormat loadFormat(const fs::path& folder, const std::vector<Size>& wanted, Coding coding,
                       const std::string& extension) {
  VideoFormat format{coding, {}};
  for (const auto& entry : fs::directory_iterator(folder)) {
    const fs::path& path = entry.path();
    const auto size = parseSize(path.stem().string());
    if (!size || path.extension() != extension) continue;
    if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), *size) == wanted.end()) continue;
    PictureSize pictures{*size, readFolder(path)};
    if (!pictures.pictures.empty()) format.sizes.push_back(std::move(pictures));
  }
  const auto pixels = [](const PictureSize& s) { return s.size.width * s.size.height; };
  std::sort(format.sizes.begin(), format.sizes.end(),
            [&](const PictureSize& a, const PictureSize& b) { return pixels(a) < pixels(b); });
  return format;
}

}  // namespace

std::vector<VideoFormat> loadPictures(const fs::path& folder, const std::vector<Size>& wanted,
                                      std::optional<Coding> coding) {
  std::vector<VideoFormat> formats;
  for (const auto& [each, extension] :
       {std::pair(Coding::Mjpeg, ".mjpeg"), {Coding::Yuyv, ".yuyv"}}) {
    if (coding && coding != each) continue;
    VideoFormat format = loadFormat(folder, wanted, each, extension);
    if (!format.sizes.empty()) formats.push_back(std::move(format));
  }
  if (formats.empty())
    throw std::runtime_error(fmt::format("no pictures to send in {}", folder.string()));
  return formats;
}

}  // namespace tessary::lab
