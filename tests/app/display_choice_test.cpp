#include <set>

#include <QtCore/QVersionNumber>
#include <gtest/gtest.h>

#include "app/DisplayChoice.h"

namespace tessary {
namespace {

std::optional<std::string> with(const QVersionNumber& toolkit,
                                const std::set<std::string>& environment) {
  return displaysToTry(toolkit, [&](const char* name) { return environment.contains(name); });
}

TEST(DisplayChoice, X11GoesBeforeAWaylandThatMayEndTheProgram) {
  const QVersionNumber unsafe(6, 4, 2);
  EXPECT_EQ(with(unsafe, {"DISPLAY", "WAYLAND_DISPLAY"}), "xcb;wayland");
  EXPECT_EQ(with(unsafe, {"DISPLAY"}), "xcb;wayland");
}

TEST(DisplayChoice, IsLeftToTheToolkitAndTheUserOtherwise) {
  EXPECT_EQ(with({6, 4, 2}, {"WAYLAND_DISPLAY"}), std::nullopt);
  EXPECT_EQ(with({6, 4, 2}, {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}), std::nullopt);
  EXPECT_EQ(with({6, 5, 0}, {"DISPLAY", "WAYLAND_DISPLAY"}), std::nullopt);
  EXPECT_EQ(with({7, 0, 0}, {"DISPLAY", "WAYLAND_DISPLAY"}), std::nullopt);
}

}  // namespace
}  // namespace tessary
