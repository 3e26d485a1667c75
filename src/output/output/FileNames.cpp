#include "output/FileNames.h"

#include <fmt/format.h>

namespace tessary {

std::string_view imageExtension(int32_t imagePNG) noexcept { return imagePNG != 0 ? "png" : "jpg"; }

std::string FileNames::makeNewFileName(std::string_view extension) {
  const CalendarTime now = clock_.localTime();
  const std::string stem = fmt::format("{}{:02}{:02}_{:02}{:02}{:02}", now.year, now.month, now.day,
                                       now.hour, now.minute, now.second);
  const int32_t key = now.hour * 10000 + now.minute * 100 + now.second;
  if (key == s_lastTime) {
    ++s_lastIdx;
    return fmt::format("{}_{}.{}", stem, s_lastIdx, extension);
  }
  s_lastTime = key;
  s_lastIdx = 0;
  return fmt::format("{}.{}", stem, extension);
}

}  // namespace tessary
