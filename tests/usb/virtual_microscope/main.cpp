// A USB microscope made of software: it is attached to the kernel's virtual USB host controller, so
// that the kernel's own USB video driver, udev and V4L2 see a camera with any vendor and product
// number. Needs root and the kernel modules vhci_hcd and uvcvideo.
//
// virtual_microscope --pictures FOLDER [options]
//   --sizes WxH[,WxH...]    of those in FOLDER, the sizes to offer (default: all)
//   --coding mjpeg|yuyv     the only one to offer (default: both)
//   --vendor 055e --product a160 --name NAME --serial TEXT
//   --port N                of the host controller, 0 to 7
//   --fps N                 at most; the host chooses 30 or 15
//   --unplugged             wait for the command
//   --commands PIPE         a named pipe that takes commands, a line each:
//
//     plug, unplug, quit
//     corrupt N     damage the next N pictures
//     truncate N    send only the first third of the next N pictures
//     error N       fail the next N USB transfers
//     freeze MS     send nothing for so many milliseconds
//     fps N         from now on
//     stall MS      take so long for each control that is set, and answer nothing meanwhile
//     press         its button, and let go
//
// What it does it says on standard error, and also when a fault is over: "corrupt 20 is over".
#include <algorithm>
#include <exception>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "common/Numbers.h"
#include "virtual_microscope/Pictures.h"
#include "virtual_microscope/Say.h"
#include "virtual_microscope/VirtualMicroscope.h"

namespace {

using namespace tessary::lab;

constexpr unsigned kLastPort = 7;

uint16_t usbNumber(const std::string& text) {
  if (const auto number = parseNumber<uint16_t>(text, 16)) return *number;
  throw std::runtime_error(fmt::format("'{}' is no USB number", text));
}

int wholeNumber(const std::string& text, int least, int most) {
  const auto number = parseNumber<int>(text);
  if (number && *number >= least && *number <= most) return *number;
  throw std::runtime_error(fmt::format("'{}' is no number from {} to {}", text, least, most));
}

std::vector<Size> sizeList(const std::string& text) {
  std::vector<Size> sizes;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(',', begin), text.size());
    const auto size = parseSize(std::string_view(text).substr(begin, end - begin));
    if (!size) throw std::runtime_error(fmt::format("'{}' are no sizes", text));
    sizes.push_back(*size);
    begin = end + 1;
  }
  return sizes;
}

Coding codingNamed(const std::string& text) {
  if (text == "mjpeg") return Coding::Mjpeg;
  if (text == "yuyv") return Coding::Yuyv;
  throw std::runtime_error(fmt::format("'{}' is no coding", text));
}

VirtualMicroscope::Options parse(const std::vector<std::string>& words) {
  VirtualMicroscope::Options options;
  std::string pictures;
  std::vector<Size> sizes;
  std::optional<Coding> coding;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& option = words[i];
    const auto value = [&]() -> const std::string& {
      if (i + 1 < words.size()) return words[++i];
      throw std::runtime_error(fmt::format("{} needs a value", option));
    };
    if (option == "--pictures")
      pictures = value();
    else if (option == "--sizes")
      sizes = sizeList(value());
    else if (option == "--coding")
      coding = codingNamed(value());
    else if (option == "--vendor")
      options.identity.vendor = usbNumber(value());
    else if (option == "--product")
      options.identity.product = usbNumber(value());
    else if (option == "--name")
      options.identity.name = value();
    else if (option == "--serial")
      options.identity.serial = value();
    else if (option == "--port")
      options.port = unsigned(wholeNumber(value(), 0, kLastPort));
    else if (option == "--fps")
      options.framesPerSecond = wholeNumber(value(), 1, std::numeric_limits<int>::max());
    else if (option == "--unplugged")
      options.plugged = false;
    else if (option == "--commands")
      options.commandPipe = value();
    else
      throw std::runtime_error(fmt::format("'{}' is not understood", option));
  }
  if (pictures.empty()) throw std::runtime_error("--pictures is missing");
  options.formats = loadPictures(pictures, sizes, coding);
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    VirtualMicroscope(parse({argv + 1, argv + argc})).run();
  } catch (const std::exception& error) {
    say("{}", error.what());
    return 1;
  }
}
