#pragma once

#include <QtGui/QIcon>

namespace tessary {

/// One of the program's icons, a resource of that name, in the colours of the desktop's theme: as
/// it was drawn where that stands out from a window, else lighter or darker; more so for
/// `QIcon::Active`, below the pointer. Its picture for `QIcon::Selected` has the colour of a
/// highlighted row's text.
QIcon themedIcon(const char* name);

}  // namespace tessary
