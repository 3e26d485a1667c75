#include "ui/CalibrationListWindowController.h"

#include <algorithm>
#include <utility>

#include <QtGui/QKeyEvent>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>

#include "dialogs/CalibrationTable.h"
#include "ui/CalibrationNameDelegate.h"
#include "ui/CalibrationTableModel.h"
#include "ui_CalibrationListWindowController.h"

namespace tessary {
namespace {

constexpr int kCellMargin = 16;

}  // namespace

CalibrationListWindowController::CalibrationListWindowController(
    QWidget* parent, Preferences& preferences, std::function<std::optional<int32_t>()> slotInForce)
    : Dialog(parent),
      ui_(std::make_unique<Ui::CalibrationListWindowController>()),
      model_(new CalibrationTableModel(preferences, std::move(slotInForce), this)) {
  ui_->setupUi(this);
  layOutTable();
  connect(ui_->calibrations->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &CalibrationListWindowController::tableViewSelectionDidChange);
  using Self = CalibrationListWindowController;
  connect(ui_->renameBtn, &QPushButton::clicked, this, &Self::renameClicked);
  connect(ui_->deleteBtn, &QPushButton::clicked, this, &Self::deleteClicked);
  connect(ui_->calibrateBtn, &QPushButton::clicked, this, &Self::calibrateClicked);
  connect(ui_->applyBtn, &QPushButton::clicked, this, &Self::applyClicked);
  connect(ui_->closeBtn, &QPushButton::clicked, this, &Self::closeClicked);
}

CalibrationListWindowController::~CalibrationListWindowController() = default;

void CalibrationListWindowController::layOutTable() {
  QTableView& table = *ui_->calibrations;
  table.installEventFilter(this);
  QHeaderView& header = *table.horizontalHeader();
  table.setModel(model_);
  table.setItemDelegateForColumn(kCalibrationNameColumn, new CalibrationNameDelegate(&table));
  table.resizeColumnsToContents();
  for (int column = 0; column < model_->columnCount(); ++column)
    header.resizeSection(column, header.sectionSize(column) + kCellMargin);
  // All that is in them shows, unless that is more than a screen holds.
  const int most = screen()->availableGeometry().width() * 9 / 10;
  table.setMinimumWidth(
      std::max(table.minimumWidth(), std::min(header.length() + 2 * table.frameWidth(), most)));
  header.setSectionResizeMode(kCalibrationNameColumn, QHeaderView::Stretch);
  header.setHighlightSections(false);
  QHeaderView& rows = *table.verticalHeader();
  rows.setDefaultSectionSize(
      std::max(rows.defaultSectionSize(), table.sizeHintForIndex(model_->index(0, 0)).height()));
  // All ten rows show without scrolling.
  table.setMinimumHeight(header.sizeHint().height() +
                         model_->rowCount() * rows.defaultSectionSize() + 2 * table.frameWidth());
}

bool CalibrationListWindowController::eventFilter(QObject* watched, QEvent* event) {
  if (watched != ui_->calibrations || event->type() != QEvent::KeyPress)
    return Dialog::eventFilter(watched, event);
  const auto& key = static_cast<const QKeyEvent&>(*event);
  if (key.key() == Qt::Key_F2) {
    renameClicked();
    return true;
  }
  // The table would look for a name that begins so, and select its row: what Enter applies.
  const bool typed = !key.text().isEmpty() && key.text().front().isPrint();
  return typed && !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier));
}

void CalibrationListWindowController::setEditingItem(int32_t row) {
  _editingItem = row;
  if (isCalibrationSlot(row)) ui_->calibrations->selectRow(row);
}

void CalibrationListWindowController::tableViewSelectionDidChange() {
  _editingItem = selectedRow();
}

void CalibrationListWindowController::renameClicked() {
  endEditing();
  _editingItem = selectedRow();
  if (!isCalibrationSlot(_editingItem)) return;
  ui_->calibrations->setFocus();
  const QModelIndex name = model_->index(_editingItem, kCalibrationNameColumn);
  ui_->calibrations->setCurrentIndex(name);
  ui_->calibrations->edit(name);
  // The old name is there to be amended: nothing of it is selected.
  if (auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget())) field->deselect();
}

void CalibrationListWindowController::deleteClicked() {
  endEditing();
  if (const int row = selectedRow(); isCalibrationSlot(row)) model_->deleteRow(row);
}

void CalibrationListWindowController::calibrateClicked() { complete(true); }
void CalibrationListWindowController::applyClicked() { complete(false); }

void CalibrationListWindowController::complete(bool calibrateOrApply) {
  endEditing();
  _editingItem = selectedRow();
  if (_delegate) _delegate->calibrationListCompleted(_editingItem, calibrateOrApply);
  done(0);
}

void CalibrationListWindowController::closeClicked() {
  endEditing();
  _editingItem = -1;
  done(0);
}

void CalibrationListWindowController::endEditing() { ui_->calibrations->setFocus(); }

int CalibrationListWindowController::selectedRow() const {
  const QModelIndexList rows = ui_->calibrations->selectionModel()->selectedRows();
  return rows.isEmpty() ? -1 : rows.front().row();
}

}  // namespace tessary
