#include "overlay/MyDataArray.h"

#include "base/Log.h"

namespace tessary {

void outOfMemory(int64_t elements, size_t elementSize) {
  log("Out of memory: no room for {} elements of {} bytes", elements, elementSize);
  // Other threads run on while static objects would be torn down, so nothing is.
  std::_Exit(EXIT_FAILURE);
}

}  // namespace tessary
