#pragma once

#include <QtWidgets/QStyledItemDelegate>

namespace tessary {

/// The field in which a calibration is renamed. It takes every sign, and says in a tool tip what a
/// comma or a semicolon will cost, as long as there is one in the name that is being typed.
class CalibrationNameDelegate final : public QStyledItemDelegate {
  Q_OBJECT
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override;
};

}  // namespace tessary
