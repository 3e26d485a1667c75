#include "ui/Announcer.h"

#include <QtGui/QAccessible>

namespace tessary {

Announcement::Announcement(QWidget* parent) : QWidget(parent) { setGeometry(0, 0, 0, 0); }

Announcer::Announcer(QWidget& parent) {
  for (Announcement*& each : announcements_) each = new Announcement(&parent);
}

void Announcer::announce(const QString& text) {
  Announcement& announcement = *announcements_[next_];
  next_ = (next_ + 1) % announcements_.size();
  announcement.setAccessibleName(text);
  // A notification is read out whenever it comes into view.
  QAccessibleEvent shown(&announcement, QAccessible::ObjectShow);
  QAccessible::updateAccessibility(&shown);
}

}  // namespace tessary
