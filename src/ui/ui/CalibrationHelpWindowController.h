#pragma once

#include <memory>

#include <QtWidgets/QWidget>

namespace Ui {
class CalibrationHelpWindowController;
}

namespace tessary {

/// The help window. Once made it lives as long as the process.
class CalibrationHelpWindowController final : public QWidget {
  Q_OBJECT
 public:
  CalibrationHelpWindowController();
  ~CalibrationHelpWindowController() override;

  /// Places the window relative to the main window, and keeps it above that.
  void setParentWindow(const QWidget& parent);

 private:
  std::unique_ptr<Ui::CalibrationHelpWindowController> ui_;
};

/// The help window once it was asked for.
extern std::unique_ptr<CalibrationHelpWindowController> gCalibrationHelpWindowController;

}  // namespace tessary
