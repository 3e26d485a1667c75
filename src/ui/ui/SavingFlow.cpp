#include "ui/SavingFlow.h"

#include <utility>

#include "base/Log.h"
#include "ui/Windows.h"

namespace tessary {

SavingFlow::SavingFlow(QWidget& window, PreviewView& previewView, Preferences& preferences,
                       Clock& clock)
    : window_(window), previewView_(previewView), preferences_(preferences), fileNames_(clock) {}

void SavingFlow::withFolder(std::function<void()> go) {
  if (preferences_.url) {
    go();
    return;
  }
  chooseFolder(window_, preferences_.url, [this, go = std::move(go)](const std::string& folder) {
    preferences_.url = folder;
    preferences_.saveURL();
    // Once the chooser has gone: what follows may be a sheet of its own.
    QMetaObject::invokeMethod(this, go, Qt::QueuedConnection);
  });
}

void SavingFlow::getPathAndSaveImage() {
  withFolder([this] { saveImageFile(); });
}

bool SavingFlow::saveImageFile() {
  const std::string name = fileNames_.makeNewFileName(imageExtension(preferences_.imagePNG));
  const bool saved = previewView_.saveImageFile(name);
  if (saved) showFileSavedWindow(name);
  return saved;
}

void SavingFlow::showFileSavedWindow(const std::string& fileName) {
  if (!fileSavedWindowController)
    fileSavedWindowController = new FileSavedWindowController(&window_);
  fileSavedWindowController->setParentWindow(window_);
  fileSavedWindowController->setFileName(QString::fromStdString(fileName));
  fileSavedWindowController->showWindow();
}

void SavingFlow::recordToolbarItemDidClick() {
  withFolder([this] { showRecordWindow(); });
}

void SavingFlow::showRecordWindow() {
  if (recordWindowController) return;
  auto* sheet = new RecordWindowController(&window_, preferences_);
  sheet->setDelegate(this);
  openSheet(*this, recordWindowController, *sheet, [this](int returnCode) {
    if (returnCode == 1) previewView_.stopRecord();
  });
}

void SavingFlow::startRecord(RecordWindowController& sender) {
  const std::string file =
      preferences_.url.value_or(std::string()) + "/" + fileNames_.makeNewFileName(kMovieExtension);
  recordLimitDidChange();
  previewView_.startRecord(file, sender.statusDelegate());
  log("startRecord: {}", file);
}

void SavingFlow::recordLimitDidChange() {
  previewView_.setRecordLimit(recordLimit(preferences_.maxRecord));
}

}  // namespace tessary
