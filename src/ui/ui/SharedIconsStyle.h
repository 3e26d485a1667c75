#pragma once

#include <map>
#include <utility>

#include <QtGui/QIcon>
#include <QtWidgets/QProxyStyle>

namespace tessary {

/// The desktop's style, whose standard icons are made once. Most styles make them anew for each
/// button of each dialog, and every one leaves its scaled pictures in the toolkit's cache.
class SharedIconsStyle final : public QProxyStyle {
  Q_OBJECT
 public:
  QIcon standardIcon(StandardPixmap which, const QStyleOption* option,
                     const QWidget* widget) const override;

 private:
  mutable std::map<std::pair<StandardPixmap, Qt::LayoutDirection>, QIcon> icons_;
};

}  // namespace tessary
