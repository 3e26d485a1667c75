#pragma once

#include <cstdint>

namespace tessary {

/// A kind and size of picture that a microscope offers or is asked for.
struct Resolution {
  uint32_t type = 0;  ///< Media subtype (base/FourCharCode.h), 0 for none.
  int32_t width = 0;
  int32_t height = 0;
  friend bool operator==(const Resolution&, const Resolution&) = default;
};

}  // namespace tessary
