#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "common/Numbers.h"
#include "virtual_microscope/Bytes.h"

namespace tessary::lab {

enum class Coding { Mjpeg, Yuyv };

/// The pictures of one size, as they go over the wire, in the order in which they are sent.
struct PictureSize {
  Size size;
  std::vector<Bytes> pictures;
};

struct VideoFormat {
  Coding coding = Coding::Mjpeg;
  std::vector<PictureSize> sizes;  // by pixel count
};

/// The formats found in `folder` (WxH.mjpeg and WxH.yuyv), MJPEG first. Only the sizes in `wanted`,
/// unless that is empty, and only `coding`, if there is one. Throws std::runtime_error if that
/// leaves nothing.
std::vector<VideoFormat> loadPictures(const std::filesystem::path& folder,
                                      const std::vector<Size>& wanted,
                                      std::optional<Coding> coding);

}  // namespace tessary::lab
