#pragma once

class QLabel;

namespace tessary {

/// The look of a text that lies over the picture, which may be light or dark. The mouse goes
/// through it.
void styleOverPicture(QLabel& text);

}  // namespace tessary
