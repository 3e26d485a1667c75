#pragma once

#include <cstdio>
#include <string>
#include <utility>

#include <fmt/format.h>

namespace tessary::lab {

/// One line to standard error. The scenarios wait for these.
template <typename... Args>
void say(fmt::format_string<Args...> format, Args&&... args) {
  const std::string line = "microscope: " + fmt::format(format, std::forward<Args>(args)...) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace tessary::lab
