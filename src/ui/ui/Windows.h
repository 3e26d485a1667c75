#pragma once
// What several windows share: where they are placed, and the folder chooser.

#include <functional>
#include <optional>
#include <string>

#include <QtWidgets/QWidget>

namespace tessary {

/// Places `window` over `parent`: centred across, and `below` the top edge of the parent's frame.
void placeIn(QWidget& window, const QWidget& parent, double below);
/// The place of the auxiliary windows: 77 below.
void placeBelowTitle(QWidget& window, const QWidget& parent);

/// Opens a folder chooser as a sheet on `window` and, if the user settles on a folder, hands its
/// path (UTF-8) to `chosen`. It starts in `current` if that is set.
void chooseFolder(QWidget& window, const std::optional<std::string>& current,
                  std::function<void(const std::string& folder)> chosen);

}  // namespace tessary
