#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "linux/V4l2Calls.h"
#include "platform/CaptureSystem.h"

namespace tessary {

/// A format of a camera together with its driver's own code for it.
struct VideoFormat {
  CaptureFormat format;
  uint32_t pixelFormat = 0;
  friend bool operator==(const VideoFormat&, const VideoFormat&) = default;
};

/// What a video node says of itself.
struct NodeProbe {
  enum class State {
    Camera,
    NotACamera,    ///< A metadata node, an output, a radio: never of use here.
    NoPermission,  ///< It can't be asked by this user.
    Unanswered,    ///< It could not be asked just now.
  };
  State state = State::Unanswered;
  std::string card;
  std::vector<VideoFormat> formats;
  std::optional<VideoFormat> currentFormat;
};

/// The media subtype for a V4L2 pixel format, 0 for one that this program can't show.
uint32_t mediaSubTypeForPixelFormat(uint32_t pixelFormat) noexcept;

/// Opens the node and asks for its kind and its formats. Starts nothing. Any thread.
NodeProbe probeNode(V4l2Calls& calls, const std::string& devNode);

}  // namespace tessary
