#include "app/DisplayChoice.h"

#include <QtCore/QVersionNumber>

namespace tessary {

std::optional<std::string> displaysToTry(const QVersionNumber& toolkit,
                                         const std::function<bool(const char*)>& isSet) {
  if (toolkit >= QVersionNumber(6, 5) || isSet("QT_QPA_PLATFORM") || !isSet("DISPLAY")) return {};
  return "xcb;wayland";
}

}  // namespace tessary
