#include "ui/CalibrationNameDelegate.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QToolTip>

#include "dialogs/CalibrationTable.h"

namespace tessary {

QWidget* CalibrationNameDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                               const QModelIndex& index) const {
  QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
  auto* field = qobject_cast<QLineEdit*>(editor);
  if (!field) return editor;
  connect(field, &QLineEdit::textEdited, field, [field](const QString& name) {
    const QString warning = QString::fromStdString(calibrationNameWarning(name.toStdString()));
    field->setToolTip(warning);
    field->setAccessibleDescription(warning);
    // Below the field, where it hides nothing of the name. An empty one goes.
    QToolTip::showText(field->mapToGlobal(QPoint(0, field->height())), warning, field);
  });
  return editor;
}

}  // namespace tessary
