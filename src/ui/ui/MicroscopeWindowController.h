#pragma once

#include <memory>

#include "capture/MicroscopeInfo.h"
#include "ui/Dialog.h"

namespace Ui {
class MicroscopeWindowController;
}

namespace tessary {

/// Told which microscope and resolution the user chose.
class MicroscopeWindowDelegate {
 public:
  virtual ~MicroscopeWindowDelegate() = default;
  virtual void startCaptureSession(const std::shared_ptr<MicroscopeInfo>& microscope,
                                   const std::shared_ptr<Resolution>& resolution) = 0;
};

/// The sheet that picks the microscope and its resolution from `gMicroscopes`. It ends with 1 after
/// the choice was handed to the delegate and with 0 when nothing was chosen.
class MicroscopeWindowController final : public Dialog {
  Q_OBJECT
 public:
  explicit MicroscopeWindowController(QWidget* parent);
  ~MicroscopeWindowController() override;

  void setDelegate(MicroscopeWindowDelegate* delegate) { _delegate = delegate; }
  /// Builds both lists anew; the resolution goes back to the microscope's default.
  void refreshMicroscopes();

 private:
  void onSelMicroscope();
  void okClicked();
  void cancelClicked();
  /// The chosen entry of `gMicroscopes`, or null.
  std::shared_ptr<MicroscopeInfo> selectedMicroscope() const;

  std::unique_ptr<Ui::MicroscopeWindowController> ui_;
  MicroscopeWindowDelegate* _delegate = nullptr;
};

}  // namespace tessary
