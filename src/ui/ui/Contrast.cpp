#include "ui/Contrast.h"

#include <algorithm>
#include <cmath>

#include <QtGui/QColor>

namespace tessary {
namespace {

/// https://www.w3.org/TR/WCAG21/#dfn-relative-luminance
double relativeLuminance(const QColor& color) {
  const auto linear = [](double value) {
    return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

}  // namespace

double contrastRatio(const QColor& a, const QColor& b) {
  const auto [darker, lighter] = std::minmax({relativeLuminance(a), relativeLuminance(b)});
  return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace tessary
