#pragma once

#include <string_view>

namespace tessary {

/// The program's, as in "0.1.0". The top CMakeLists.txt says it once for all.
std::string_view version();

}  // namespace tessary
