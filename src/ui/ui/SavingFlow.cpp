#include "ui/SavingFlow.h"

#include <atomic>
#include <utility>

#include "base/Log.h"
#include "output/RecordingStatus.h"
#include "ui/Windows.h"

namespace tessary {
namespace {

/// Passes on to the sheet how a recording goes, and tells of the movie's end, by when the sheet has
/// gone.
class MovieStatus final : public PreviewViewRecordDelegate {
 public:
  /// `saved` is called on the main thread, for a movie that holds something.
  MovieStatus(std::weak_ptr<PreviewViewRecordDelegate> sheet, std::function<void()> saved)
      : sheet_(std::move(sheet)), saved_(std::move(saved)) {}

  void recordStatusDidChange(int64_t status) override {
    if (const auto sheet = sheet_.lock()) sheet->recordStatusDidChange(status);
    if (status == kRecordingRunning) hasFrames_ = true;
    if (status == kRecordingFinished && hasFrames_) saved_();
  }

 private:
  const std::weak_ptr<PreviewViewRecordDelegate> sheet_;
  const std::function<void()> saved_;
  std::atomic<bool> hasFrames_{false};  // set on the recording queue
};

}  // namespace

SavingFlow::SavingFlow(QWidget& window, PreviewView& previewView, Preferences& preferences,
                       Clock& clock, Announcer& announcer)
    : window_(window),
      previewView_(previewView),
      preferences_(preferences),
      fileNames_(clock),
      announcer_(announcer) {}

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
  announceSaved(fileName);
}

void SavingFlow::announceSaved(const std::string& fileName) {
  announcer_.announce(tr("Saved %1").arg(QString::fromStdString(fileName)));
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
  const std::string name = fileNames_.makeNewFileName(kMovieExtension);
  const std::string file = preferences_.url.value_or(std::string()) + "/" + name;
  recordLimitDidChange();
  movie_ =
      std::make_shared<MovieStatus>(sender.statusDelegate(), [this, name] { announceSaved(name); });
  previewView_.startRecord(file, movie_);
  log("startRecord: {}", file);
}

void SavingFlow::recordLimitDidChange() {
  previewView_.setRecordLimit(recordLimit(preferences_.maxRecord));
}

}  // namespace tessary
