#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/Clock.h"

namespace tessary {

inline constexpr std::string_view kMovieExtension = "mp4";

/// "png" for any photo format but 0, "jpg" for 0.
std::string_view imageExtension(int32_t imagePNG) noexcept;

/// Names for new files, made from the clock on the wall; stills and movies share one instance. A
/// name comes only once in a run of the program; which files exist is not looked at. Main thread.
class FileNames {
 public:
  explicit FileNames(Clock& clock) : clock_(clock) {}

  /// The name alone, without a folder: 20240131_093005.jpg, then 20240131_093005_1.jpg within the
  /// same second.
  std::string makeNewFileName(std::string_view extension);

 private:
  Clock& clock_;
  // The time of day of the latest name, as the digits HHMMSS. That it starts at midnight and holds
  // no date is meant: the first name at 00:00:00, and one made a day later to the second, are
  // numbered too.
  int32_t s_lastTime = 0;
  int32_t s_lastIdx = 0;  // further names made in that second
};

}  // namespace tessary
