#include "base/Version.h"

namespace tessary {

std::string_view version() { return TESSARY_VERSION; }

}  // namespace tessary
