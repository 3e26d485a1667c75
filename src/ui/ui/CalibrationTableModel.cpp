#include "ui/CalibrationTableModel.h"

#include <iterator>
#include <utility>

#include <QtGui/QIcon>
#include <QtGui/QPainter>
#include <QtGui/QPalette>
#include <QtGui/QPixmap>
#include <QtWidgets/QApplication>

#include "dialogs/CalibrationTable.h"

namespace tessary {
namespace {

constexpr int kIdColumn = 0;
constexpr int kValueColumn = 2;
constexpr int kMarkSize = 64;  // scaled down to what the style takes

/// A check mark in the colours of the texts beside it, so that it shows on a selected row too.
QIcon checkMark() {
  QIcon icon;
  const QPalette palette = QApplication::palette();
  for (const auto& [mode, role] : {std::pair(QIcon::Normal, QPalette::Text),
                                   std::pair(QIcon::Selected, QPalette::HighlightedText)}) {
    QPixmap mark(kMarkSize, kMarkSize);
    mark.fill(Qt::transparent);
    QPainter painter(&mark);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(
        QPen(palette.color(role), 1.0 / 8.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.scale(kMarkSize, kMarkSize);
    const QPointF corners[] = {{0.16, 0.55}, {0.40, 0.79}, {0.84, 0.28}};
    painter.drawPolyline(corners, int(std::size(corners)));
    painter.end();
    icon.addPixmap(mark, mode);
  }
  return icon;
}

QVariant markOfSlotInForce(int row, int role) {
  switch (role) {
    case Qt::DecorationRole: return checkMark();
    case Qt::ToolTipRole: return CalibrationTableModel::tr("In force");
    default: return CalibrationTableModel::tr("%1, in force").arg(row + 1);
  }
}

}  // namespace

CalibrationTableModel::CalibrationTableModel(Preferences& preferences,
                                             std::function<std::optional<int32_t>()> slotInForce,
                                             QObject* parent)
    : QAbstractTableModel(parent),
      preferences_(preferences),
      slotInForce_(std::move(slotInForce)) {}

int CalibrationTableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : int(kCalibrationSlots);
}

int CalibrationTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : int(kCalibrationColumns.size());
}

QVariant CalibrationTableModel::headerData(int section, Qt::Orientation orientation,
                                           int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  const std::string_view title = kCalibrationColumns[size_t(section)].title;
  return QString::fromUtf8(title.data(), qsizetype(title.size()));
}

QVariant CalibrationTableModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
      return QString::fromStdString(
          calibrationCellText(kCalibrationColumns[size_t(index.column())].identifier, index.row(),
                              preferences_.calibrations[size_t(index.row())]));
    case Qt::TextAlignmentRole:
      if (index.column() == kIdColumn || index.column() == kValueColumn)
        return int(Qt::AlignRight | Qt::AlignVCenter);
      return {};
    case Qt::DecorationRole:
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole:
      if (index.column() != kIdColumn || slotInForce_() != int32_t(index.row())) return {};
      return markOfSlotInForce(index.row(), role);
    default: return {};
  }
}

Qt::ItemFlags CalibrationTableModel::flags(const QModelIndex& index) const {
  const Qt::ItemFlags shown = QAbstractTableModel::flags(index);
  return index.column() == kCalibrationNameColumn ? shown | Qt::ItemIsEditable : shown;
}

bool CalibrationTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || index.column() != kCalibrationNameColumn ||
      !isCalibrationSlot(index.row()))
    return false;
  preferences_.calibrations[size_t(index.row())].name = value.toString().toStdString();
  preferences_.save();
  emit dataChanged(index, index);
  return true;
}

void CalibrationTableModel::deleteRow(int row) {
  preferences_.calibrations[size_t(row)] = {};
  preferences_.save();
  emit dataChanged(index(row, 0), index(row, columnCount() - 1));
}

}  // namespace tessary
