#pragma once

#include <array>

#include <QtWidgets/QWidget>

namespace tessary {

/// What was said last, for a screen reader to read out. Nothing of it shows.
class Announcement final : public QWidget {
  Q_OBJECT
 public:
  explicit Announcement(QWidget* parent);
};

/// Says to a screen reader what others see happen: a measurement, a saved file, a failure.
class Announcer final {
 public:
  /// What is said belongs to `parent`, which has to be on screen for it to be heard.
  explicit Announcer(QWidget& parent);

  /// At once; said again if it is the same text.
  void announce(const QString& text);

 private:
  // A screen reader asks for the words once it has heard that there are some: by then the next may
  // have been said.
  std::array<Announcement*, 4> announcements_;
  size_t next_ = 0;
};

}  // namespace tessary
