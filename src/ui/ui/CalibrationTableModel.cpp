#include "ui/CalibrationTableModel.h"

#include "dialogs/CalibrationTable.h"

namespace tessary {
namespace {

constexpr int kIdColumn = 0;
constexpr int kValueColumn = 2;

}  // namespace

CalibrationTableModel::CalibrationTableModel(Preferences& preferences, QObject* parent)
    : QAbstractTableModel(parent), preferences_(preferences) {}

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
