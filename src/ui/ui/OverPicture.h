#pragma once

class QLabel;
class QSlider;

namespace tessary {

/// The look of a text that lies over the picture, which may be light or dark: it can be read over
/// any. The mouse goes through it.
void styleOverPicture(QLabel& text);
/// The look of a slider that lies over the picture and the dark margin around it: its ticks can be
/// seen on any, whatever theme the desktop has.
void styleOverPicture(QSlider& slider);

}  // namespace tessary
