#pragma once

class QColor;

namespace tessary {

/// How far two opaque colours stand out from each other, from 1 to 21: the contrast ratio of the
/// Web Content Accessibility Guidelines 2.1. Texts need 4.5, pictures 3.
double contrastRatio(const QColor& a, const QColor& b);

}  // namespace tessary
