#include "ui/CameraControlsWindow.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QtCore/QTimer>
#include <QtGui/QScreen>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QVBoxLayout>

#include "ui/CameraControlRow.h"
#include "ui/Windows.h"

namespace tessary {
namespace {

constexpr QSize kSmallest(360, 200);
constexpr QSize kUsual(420, 300);
constexpr std::chrono::milliseconds kPatience(300);
constexpr std::pair<ControlGroup, const char*> kGroups[] = {
    {ControlGroup::Exposure, "Exposure"}, {ControlGroup::Colour, "Colour"},
    {ControlGroup::Focus, "Focus"},       {ControlGroup::Picture, "Picture"},
    {ControlGroup::Other, "Others"},
};

/// Whether a row that was made for `a` can show `b`.
bool isSameControl(const CameraControl& a, const CameraControl& b) {
  CameraControl alike = b;
  alike.value = a.value;
  alike.canBeSet = a.canBeSet;
  return alike == a;
}

}  // namespace

CameraControlsWindow::CameraControlsWindow(QWidget* parent, CameraControlBoard& board)
    : Dialog(parent), board_(board) {
  setWindowTitle(tr("Camera Controls"));
  setMinimumSize(kSmallest);
  resize(kUsual);
  auto* layout = new QVBoxLayout(this);
  message_ = new QLabel;
  message_->setAlignment(Qt::AlignCenter);
  message_->setWordWrap(true);
  layout->addWidget(message_, 1);
  list_ = new QScrollArea;
  list_->setWidgetResizable(true);
  list_->setFrameShape(QFrame::NoFrame);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list_->setFocusPolicy(Qt::NoFocus);
  layout->addWidget(list_, 1);
  buttons_ = new QDialogButtonBox(QDialogButtonBox::Close);
  defaults_ = buttons_->addButton(tr("&All Defaults"), QDialogButtonBox::ResetRole);
  // Return is for the number fields.
  for (QAbstractButton* button : buttons_->buttons())
    static_cast<QPushButton*>(button)->setAutoDefault(false);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(defaults_, &QPushButton::clicked, this, [this] { board_.setAllDefaults(); });
  layout->addWidget(buttons_);
  board_.setObserver([this] { boardDidChange(); });
  boardDidChange();
}

CameraControlsWindow::~CameraControlsWindow() { board_.setObserver({}); }

void CameraControlsWindow::showWindow() {
  // A window that changes its size while it comes up is not put where it was to be, so it waits for
  // the camera; but not long.
  isAwaited_ = true;
  if (isVisible() || !board_.hasCamera() || board_.isRead())
    comeForward();
  else
    QTimer::singleShot(kPatience, this, &CameraControlsWindow::comeForward);
}

void CameraControlsWindow::comeForward() {
  if (!std::exchange(isAwaited_, false)) return;
  if (!isVisible()) placeBeside(*this, *parentWidget());
  show();
  raise();
  activateWindow();
}

void CameraControlsWindow::boardDidChange() {
  const auto controls = board_.controls();
  if (!hasRowsFor(controls)) rebuild();
  for (size_t i = 0; i < rows_.size(); ++i) rows_[i]->show(controls[i]);
  if (!board_.hasCamera())
    message_->setText(tr("No microscope is open."));
  else if (!board_.isRead())
    message_->setText(tr("Asking the camera…"));
  else
    message_->setText(tr("This camera has no controls."));
  message_->setVisible(controls.empty());
  list_->setVisible(!controls.empty());
  defaults_->setEnabled(!controls.empty());
  if (!controls.empty() && !std::exchange(isFitted_, true)) fitToRows();
  if (board_.isRead()) comeForward();
}

bool CameraControlsWindow::hasRowsFor(std::span<const CameraControl> controls) const {
  return std::ranges::equal(rows_, controls,
                            [](const CameraControlRow* row, const CameraControl& control) {
                              return isSameControl(row->control(), control);
                            });
}

void CameraControlsWindow::rebuild() {
  auto* content = new QWidget;
  auto* groups = new QVBoxLayout(content);
  groups->setContentsMargins(0, 0, 0, 0);
  const auto controls = board_.controls();
  rows_.assign(controls.size(), nullptr);
  for (const auto& [group, title] : kGroups) {
    QGridLayout* grid = nullptr;
    for (size_t i = 0; i < controls.size(); ++i) {
      if (controls[i].group != group) continue;
      if (!grid) {
        auto* box = new QGroupBox(tr(title));
        grid = new QGridLayout(box);
        grid->setColumnStretch(1, 1);
        groups->addWidget(box);
      }
      auto* row = new CameraControlRow(controls[i], *grid, grid->rowCount());
      connect(row, &CameraControlRow::valueWanted, this,
              [this](uint32_t id, int32_t value) { board_.set(id, value); });
      connect(row, &CameraControlRow::pressed, this, [this](uint32_t id) { board_.press(id); });
      connect(row, &CameraControlRow::defaultWanted, this,
              [this](uint32_t id) { board_.setDefault(id); });
      rows_[i] = row;
    }
  }
  groups->addStretch(1);
  // Later, as this may be the answer to one of its own buttons.
  if (QWidget* old = list_->takeWidget()) old->deleteLater();
  list_->setWidget(content);
  // The keyboard begins with the first row, and the buttons, which are older, come last.
  QWidget* first = nullptr;
  QWidget* last = nullptr;
  for (QWidget* widget : content->findChildren<QWidget*>()) {
    if (!(widget->focusPolicy() & Qt::TabFocus)) continue;
    if (!first) first = widget;
    last = widget;
  }
  if (!first) return;
  first->setFocus();
  setTabOrder(last, defaults_);
  setTabOrder(defaults_, buttons_->button(QDialogButtonBox::Close));
}

void CameraControlsWindow::fitToRows() {
  const QSize content = list_->widget()->sizeHint();
  list_->setMinimumWidth(content.width() + list_->verticalScrollBar()->sizeHint().width());
  const QMargins margins = layout()->contentsMargins();
  const int others =
      margins.top() + layout()->spacing() + buttons_->sizeHint().height() + margins.bottom();
  const int most = screen()->availableGeometry().height() * 3 / 4;
  const int width = layout()->totalMinimumSize().width();
  resize(std::max(width, kUsual.width()), std::min(content.height() + others, most));
}

}  // namespace tessary
