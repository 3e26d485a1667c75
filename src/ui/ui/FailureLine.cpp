#include "ui/FailureLine.h"

#include <algorithm>
#include <chrono>

#include <QtCore/QEvent>
#include <QtGui/QAccessible>
#include <QtWidgets/QApplication>

#include "ui/OverPicture.h"

namespace tessary {
namespace {

constexpr int kLeft = 15;
constexpr int kTop = 10;
/// What the two pan sliders take of the width.
constexpr int kRoomAtRight = 190;
constexpr int kBelowSheet = 8;
constexpr std::chrono::seconds kSecond(1);

}  // namespace

FailureLine::FailureLine(QWidget& container, FailureMessages& messages, Announcer& announcer)
    : QLabel(&container), container_(container), messages_(messages), announcer_(announcer) {
  setObjectName(QStringLiteral("failureText"));
  styleOverPicture(*this);
  setMargin(3);
  setWordWrap(true);
  setTextFormat(Qt::PlainText);
  container.installEventFilter(this);
  connect(&timer_, &QTimer::timeout, this, &FailureLine::secondPassed);
  messages_.setDidChange([this] { messageDidChange(); });
  messageDidChange();  // what was told before there was a window
}

FailureLine::~FailureLine() { messages_.setDidChange({}); }

bool FailureLine::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize) layOut();
  return QLabel::eventFilter(watched, event);
}

void FailureLine::messageDidChange() {
  const QString text = QString::fromStdString(messages_.text());
  setText(text);
  setVisible(!text.isEmpty());
  if (text.isEmpty()) {
    timer_.stop();
    return;
  }
  layOut();
  raise();
  timer_.start(kSecond);
  announce();
}

void FailureLine::announce() {
  // What is told while the program starts is kept until somebody listens.
  if (!QAccessible::isActive()) return;
  const std::string text = messages_.takeUnsaid();
  if (!text.empty()) announcer_.announce(QString::fromStdString(text));
}

void FailureLine::secondPassed() {
  // A message that nobody can see keeps its time.
  if (window()->isMinimized()) return;
  layOut();  // a sheet may have come or moved
  announce();
  messages_.secondPassed();
}

void FailureLine::layOut() {
  const int widest = std::max(container_.width() - kLeft - kRoomAtRight, 1);
  const int oneLine = fontMetrics().horizontalAdvance(text()) + 2 * margin() + 2;
  const int width = std::min(widest, oneLine);
  QRect line(kLeft, kTop, width, heightForWidth(width));
  line.moveTop(topBelowSheets(line));
  setGeometry(line);
}

int FailureLine::topBelowSheets(QRect line) const {
  const QWidget* sheet = QApplication::activeModalWidget();
  if (!sheet || !sheet->isVisible()) return line.top();
  const QRect frame = sheet->frameGeometry();
  const QRect covered(container_.mapFromGlobal(frame.topLeft()), frame.size());
  const int below = covered.bottom() + 1 + kBelowSheet;
  // A sheet that leaves no room below leaves the line where it is.
  return covered.intersects(line) && below + line.height() <= container_.height() ? below
                                                                                  : line.top();
}

}  // namespace tessary
