#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include "output/FileNames.h"
#include "settings/Preferences.h"
#include "ui/Announcer.h"
#include "ui/FileSavedWindowController.h"
#include "ui/RecordWindowController.h"
#include "view/PreviewView.h"

namespace tessary {

/// How stills and movies get into the user's folder: the folder is asked for once, files are named
/// by the clock, the record sheet starts and stops a movie, a notice names the still just saved,
/// and screen readers are told of either.
class SavingFlow final : public QObject, private RecordWindowDelegate {
 public:
  /// All must outlive it; `window` carries the sheets.
  SavingFlow(QWidget& window, PreviewView& previewView, Preferences& preferences, Clock& clock,
             Announcer& announcer);

  /// Saves a still, after asking for the folder if there is none.
  void getPathAndSaveImage();
  /// Shows the record sheet, after asking for the folder if there is none.
  void recordToolbarItemDidClick();

 private:
  /// Runs `go` at once where a folder is set; otherwise asks for one and, if the user settles on
  /// one, runs it from the event loop.
  void withFolder(std::function<void()> go);
  bool saveImageFile();
  void showFileSavedWindow(const std::string& fileName);
  void announceSaved(const std::string& fileName);
  void showRecordWindow();
  void startRecord(RecordWindowController& sender) override;
  void recordLimitDidChange() override;

  QWidget& window_;
  PreviewView& previewView_;
  Preferences& preferences_;
  FileNames fileNames_;
  Announcer& announcer_;
  std::shared_ptr<PreviewViewRecordDelegate> movie_;        // told of the recording last started
  QPointer<RecordWindowController> recordWindowController;  // while the sheet is up
  QPointer<FileSavedWindowController> fileSavedWindowController;  // kept after its first use
};

}  // namespace tessary
