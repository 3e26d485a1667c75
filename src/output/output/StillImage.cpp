#include "output/StillImage.h"

#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "base/Log.h"
#include "base/PartFiles.h"
#include "output/AtomicFile.h"
#include "output/FileSync.h"
#include "output/XmpPacket.h"

namespace tessary {
namespace {

constexpr const char* kAnotherFolder = "Choose another folder in Options.";
constexpr const char* kNoAnswer = "the disk does not answer";

std::unique_ptr<SerialQueue> makeQueue() {
  return std::make_unique<SerialQueue>("com.tessary.file.still", std::chrono::milliseconds(0));
}

}  // namespace

/// One picture on its way to the disk.
struct StillImage::Saving {
  enum class Phase { Opening, Writing, GivenUp };

  std::string folder;
  std::string path;
  std::vector<uint8_t> bytes;
  bool isEmpty = false;  // there is no picture, or it could not be encoded
  std::atomic<Phase> phase{Phase::Opening};
  std::atomic<bool> isStuck{false};  // from the disk's first call to its last answer

  /// Goes on from Opening, unless the other side has.
  bool enter(Phase next) {
    Phase expected = Phase::Opening;
    return phase.compare_exchange_strong(expected, next);
  }
};

/// What the thread uses.
struct StillImage::Disk {
  FailurePost::Copy failures;
  FileCalls& calls;
  FileSync sync;
  std::mutex mutex;  // guards cleanedFolders: a thread that was left to itself may come back
  std::set<std::string> cleanedFolders;

  Disk(FailurePost::Copy failuresTo, FileCalls& fileCalls)
      : failures(std::move(failuresTo)), calls(fileCalls), sync([to = failures](auto& path) {
          to.failed(Failure::StillNotSaved,
                    fmt::format("The picture {} may be lost: the disk could not take it. Save it "
                                "again, in another folder.",
                                std::filesystem::path(path).filename().string()));
        }) {}

  /// The error number, if no file can be made; otherwise 0, whatever comes then.
  int save(Saving& saving) {
    AtomicFile file(saving.path, calls);
    if (!file.isOpen()) return file.error();
    if (!saving.enter(Saving::Phase::Writing) || saving.isEmpty) return 0;
    if (file.save(saving.bytes)) {
      sync.makeDurable(saving.path, file.identity());
      failures.recovered(Failure::StillNotSaved);
    } else {
      log("The picture for {} is lost: {}", saving.path,
          std::generic_category().message(file.error()));
      failures.failed(Failure::StillNotSaved,
                      fmt::format("The picture is lost: {}. {}",
                                  fileErrorText(file.error(), saving.path), kAnotherFolder));
    }
    if (isFirstIn(saving.folder)) removeAbandonedParts(saving.folder);
    return 0;
  }

  bool isFirstIn(const std::string& folder) {
    const std::lock_guard lock(mutex);
    return cleanedFolders.insert(folder).second;
  }
};

StillImage::StillImage(ImageEncoder& jpegEncoder, ImageEncoder& pngEncoder, Executor& mainQueue,
                       FailureListener& failures, FileCalls& calls,
                       std::chrono::milliseconds answerLimit)
    : jpegEncoder_(jpegEncoder),
      pngEncoder_(pngEncoder),
      answerLimit_(answerLimit),
      failures_(mainQueue, failures),
      disk_(std::make_shared<Disk>(failures_.copy(), calls)),
      queue_(makeQueue()) {}

StillImage::~StillImage() {
  queue_->call(answerLimit_, [] { return true; });
}

bool StillImage::saveImageFile(const std::string& folder, const std::string& fileName,
                               int32_t imagePNG, const PixelBuffer& picture,
                               const StillInfo& info) {
  const auto saving = std::make_shared<Saving>();
  saving->folder = folder;
  saving->path = std::filesystem::path(folder) / fileName;
  // Before anything is written, so that a file is on its way for as short as can be.
  if (picture.byteCount() > 0)
    saving->bytes = encodedStill(imagePNG != 0 ? pngEncoder_ : jpegEncoder_, picture, info);
  saving->isEmpty = saving->bytes.empty();
  if (!saveWithin(saving)) return false;

  if (picture.byteCount() == 0) {
    log("Nothing was saved to {}: there is no picture", saving->path);
    failures_.copy().failed(Failure::StillNotSaved, "Nothing was saved: there is no picture yet.");
  } else if (saving->isEmpty) {
    log("The picture for {} is lost: it could not be encoded", saving->path);
    failures_.copy().failed(Failure::StillNotSaved,
                            "The picture is lost: there is not enough memory. Close other programs "
                            "and save it again.");
  }
  return true;
}

bool StillImage::saveWithin(const std::shared_ptr<Saving>& saving) {
  if (late_ && late_->isStuck) {
    // Nobody waits twice for the same disk; another one gets a thread of its own.
    if (late_->folder == saving->folder) return notSaved(*saving, kNoAnswer, kNoAnswer);
    queue_ = makeQueue();
  }
  late_ = nullptr;
  const auto error = queue_->call(answerLimit_, [disk = disk_, saving] {
    saving->isStuck = true;
    const int result = disk->save(*saving);
    saving->isStuck = false;
    return result;
  });
  if (!error) {
    late_ = saving;
    // The file can be made, and is being written.
    if (!saving->enter(Saving::Phase::GivenUp)) return true;
    return notSaved(*saving, kNoAnswer, kNoAnswer);
  }
  return *error == 0 || notSaved(*saving, std::generic_category().message(*error),
                                 fileErrorText(*error, saving->path));
}

bool StillImage::notSaved(const Saving& saving, const std::string& logged,
                          const std::string& told) {
  log("Can NOT save file: {}", saving.path);
  log("No file can be made in the folder {}: {}", saving.folder, logged);
  failures_.copy().failed(Failure::StillNotSaved,
                          fmt::format("The picture was not saved: {}. {}", told, kAnotherFolder));
  return false;
}

}  // namespace tessary
