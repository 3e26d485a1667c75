#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tessary::test {

/// What a player finds in a movie.
struct ReadMovie {
  std::string majorBrand;
  std::string codec;
  int width = 0;
  int height = 0;
  bool fullRange = false;
  bool bt601 = false;
  int tracks = 0;
  int reorderDelay = 0;
  double bitRate = 0;          ///< Of the whole file, by its length in time; bits a second.
  int64_t duration = 0;        ///< Microseconds.
  std::vector<int64_t> times;  ///< Of the frames as decoded, microseconds.
  std::vector<bool> keys;
  std::vector<std::array<int, 3>> colors;  ///< Blue, green, red in the middle of each frame.
};

/// Decodes all of it; nothing if any of it can't be read or decoded.
std::optional<ReadMovie> readMovie(const std::filesystem::path& path);

/// The types of the file's boxes, those in containers named with their path ("moov/trak").
/// A box that runs past the end is left out when `cutShort`, and makes the list empty otherwise.
std::vector<std::string> readBoxes(const std::filesystem::path& path, bool cutShort = false);

}  // namespace tessary::test
