#pragma once
// What several windows share: where they are placed, alerts, and the folder chooser.

#include <functional>
#include <optional>
#include <string>

#include <QtCore/QPoint>
#include <QtCore/QRect>
#include <QtWidgets/QMessageBox>

#include "base/Geometry.h"

namespace tessary {

/// A rectangle of the desktop's.
ScreenRect screenRect(const QRect& rect);

/// Moves a window so that its frame's corner is at `place`, also while the window manager has not
/// given it a frame yet.
void moveFrameTo(QWidget& window, QPoint place);

/// Places `window` over `parent`: centred across, and `below` the top edge of the parent's frame.
void placeIn(QWidget& window, const QWidget& parent, double below);
/// The place of the auxiliary windows: 77 below.
void placeBelowTitle(QWidget& window, const QWidget& parent);

/// Has a Wayland compositor keep `window`, which is not shown yet, above `parent`: no flag of the
/// window does that there.
void keepAbove(QWidget& window, const QWidget& parent);

/// The flags of a notice over the picture, which never takes the keyboard.
Qt::WindowFlags noticeFlags();

/// Places `window`, which has its size, beside `parent`.
void placeBeside(QWidget& window, const QWidget& parent);

/// Opens an alert with an OK button as a sheet on `window`. It goes by itself; what is returned is
/// good until then, to be made more of at once.
QMessageBox& openAlert(QWidget& window, QMessageBox::Icon icon, const QString& message,
                       const QString& information = {});

/// Opens a folder chooser as a sheet on `window` and, if the user settles on a folder, hands its
/// path (UTF-8) to `chosen`. It starts in `current` if that is set.
void chooseFolder(QWidget& window, const std::optional<std::string>& current,
                  std::function<void(const std::string& folder)> chosen);

}  // namespace tessary
