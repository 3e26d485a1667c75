#include "dialogs/ColorText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include <fmt/format.h>

namespace tessary {
namespace {

/// What differs by less has no hue that one would see.
constexpr int kLeastChroma = 24;

struct Hue {
  double upTo;  // degrees
  std::string_view name;
};

constexpr std::array kHues{Hue{15, "red"},     Hue{45, "orange"}, Hue{70, "yellow"},
                           Hue{165, "green"},  Hue{195, "cyan"},  Hue{255, "blue"},
                           Hue{290, "purple"}, Hue{335, "pink"},  Hue{360, "red"}};

/// 0 to 360 degrees, red at both ends. Not for greys.
double hueOf(int red, int green, int blue) {
  const int most = std::max({red, green, blue});
  const double chroma = most - std::min({red, green, blue});
  if (most == red) return std::fmod((green - blue) / chroma * 60 + 360, 360);
  if (most == green) return (blue - red) / chroma * 60 + 120;
  return (red - green) / chroma * 60 + 240;
}

std::string_view shade(int lightness) {
  if (lightness < 80) return "dark ";
  return lightness > 190 ? "light " : "";
}

std::string nameOf(int red, int green, int blue) {
  const int most = std::max({red, green, blue});
  const int least = std::min({red, green, blue});
  const int lightness = (most + least) / 2;
  if (lightness < 16) return "black";
  if (lightness > 243) return "white";
  if (most - least < kLeastChroma) return fmt::format("{}grey", shade(lightness));
  const double hue = hueOf(red, green, blue);
  const auto* const found =
      std::ranges::find_if(kHues, [hue](const Hue& each) { return hue < each.upTo; });
  return fmt::format("{}{}", shade(lightness), found->name);
}

}  // namespace

std::string colorText(const Color& color) {
  // The upper half of 16 bits, as the dialog has it in which colours are chosen.
  const auto byte = [](double value) {
    return int(std::lround(std::clamp(value, 0.0, 1.0) * 65535)) >> 8;
  };
  const int red = byte(color.red);
  const int green = byte(color.green);
  const int blue = byte(color.blue);
  return fmt::format("{}, #{:02X}{:02X}{:02X}", nameOf(red, green, blue), red, green, blue);
}

}  // namespace tessary
