// Looks at the screen of an Xvfb that was started with -fbdir: FILE is its Xvfb_screen0.
//
//   screen number FILE
//       "NUMBER LEFT BOTTOM" of the microscope's picture; 1: there is none
//   screen moving FILE COUNT SECONDS
//       waits for COUNT different pictures, prints them; 1: too few
//   screen shown FILE SECONDS
//       how many different pictures there were in that time; 1: none
//   screen gone FILE SECONDS
//       waits until there is no picture; 1: it stays
//   screen plain FILE LEFT TOP WIDTH HEIGHT
//       0: the rectangle has one colour only; 1: it has several
//   screen save FILE PPM
//       a screenshot
//
// Exit status 2: FILE can't be read, or the command is not understood.
#include <chrono>
#include <exception>
#include <functional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "common/Numbers.h"
#include "screen/FrameBuffer.h"
#include "screen/StripReader.h"

namespace {

using namespace tessary::lab;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kInterval(20);
constexpr std::chrono::seconds kGoneFor(2);

int numberArgument(const std::string& text) {
  if (const auto number = parseNumber<int>(text)) return *number;
  throw std::runtime_error(fmt::format("'{}' is no number", text));
}

bool waitUntil(int seconds, const std::function<bool()>& condition) {
  const auto deadline = Clock::now() + std::chrono::seconds(seconds);
  while (!condition()) {
    if (Clock::now() >= deadline) return false;
    std::this_thread::sleep_for(kInterval);
  }
  return true;
}

bool number(const FrameBuffer& screen) {
  const auto picture = findPicture(screen);
  if (!picture) return false;
  fmt::print("{} {} {}\n", picture->number, picture->left, picture->bottom);
  return true;
}

bool moving(const FrameBuffer& screen, int count, int seconds) {
  std::vector<int> order;
  std::set<int> seen;
  const bool enough = waitUntil(seconds, [&] {
    const auto picture = findPicture(screen);
    if (picture && seen.insert(picture->number).second) order.push_back(picture->number);
    return seen.size() >= size_t(count);
  });
  fmt::print("{}\n", fmt::join(order, " "));
  return enough;
}

bool shown(const FrameBuffer& screen, int seconds) {
  std::set<int> seen;
  waitUntil(seconds, [&] {
    if (const auto picture = findPicture(screen)) seen.insert(picture->number);
    return false;
  });
  fmt::print("{}\n", seen.size());
  return !seen.empty();
}

bool gone(const FrameBuffer& screen, int seconds) {
  // One look without a picture may have met the screen in the middle of a change.
  auto lastSeen = Clock::now();
  return waitUntil(seconds, [&] {
    const auto now = Clock::now();
    if (findPicture(screen)) lastSeen = now;
    return now - lastSeen >= kGoneFor;
  });
}

bool plain(const FrameBuffer& screen, int left, int top, int width, int height) {
  const Size size = screen.size();
  if (left < 0 || top < 0 || width <= 0 || height <= 0 || left + width > size.width ||
      top + height > size.height)
    throw std::runtime_error("the rectangle is not on the screen");
  const uint32_t color = screen.pixel(left, top);
  for (int y = top; y < top + height; ++y)
    for (int x = left; x < left + width; ++x)
      if (screen.pixel(x, y) != color) return false;
  return true;
}

bool run(const std::vector<std::string>& words) {
  const auto is = [&](const char* name, size_t count) {
    return words.size() == count && words[0] == name;
  };
  if (words.size() < 2) throw std::runtime_error("what should be looked for?");
  const FrameBuffer screen(words[1]);
  if (is("number", 2)) return number(screen);
  if (is("moving", 4)) return moving(screen, numberArgument(words[2]), numberArgument(words[3]));
  if (is("shown", 3)) return shown(screen, numberArgument(words[2]));
  if (is("gone", 3)) return gone(screen, numberArgument(words[2]));
  if (is("plain", 6))
    return plain(screen, numberArgument(words[2]), numberArgument(words[3]),
                 numberArgument(words[4]), numberArgument(words[5]));
  if (is("save", 3)) {
    screen.save(words[2]);
    return true;
  }
  throw std::runtime_error(fmt::format("'{}' is not understood", fmt::join(words, " ")));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run({argv + 1, argv + argc}) ? 0 : 1;
  } catch (const std::exception& error) {
    fmt::print(stderr, "screen: {}\n", error.what());
    return 2;
  }
}
