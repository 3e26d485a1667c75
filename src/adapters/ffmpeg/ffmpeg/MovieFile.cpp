#include "ffmpeg/MovieFile.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <utility>

#include <sys/stat.h>

#include "base/PartFiles.h"

namespace tessary {
namespace {

/// A file that is younger was made under the same name just now, by someone else: a name is of one
/// second, and comes only once in a run of the program.
constexpr std::chrono::seconds kJustMade(2);

/// More than there can be of one second.
constexpr int kNameAttempts = 1000;

bool isJustMade(const struct stat& status) {
  using namespace std::chrono;
  const auto changed = seconds(status.st_mtim.tv_sec) + nanoseconds(status.st_mtim.tv_nsec);
  const auto age = system_clock::now().time_since_epoch() - changed;
  return age < kJustMade && age > -kJustMade;
}

}  // namespace

MovieFile::MovieFile(std::string path, FileCalls& calls) : path_(std::move(path)), calls_(calls) {}

MovieFile::~MovieFile() { closeFile(); }

void MovieFile::closeFile() {
  file_.close();
  if (!partPath_.empty()) calls_.unlink(std::exchange(partPath_, {}));
}

Result<void> MovieFile::open() {
  makePlace();
  const std::string folder = std::filesystem::path(path_).parent_path().string();
  file_ = FileDescriptor(calls_.openNameless(folder));
  if (!file_.isOpen()) {
    // Not every file system has nameless files (EOPNOTSUPP), nor did every kernel (EISDIR, ENOENT).
    removeAbandonedParts(folder);
    return openPart();
  }
  markInUse(file_.get());
  return {};
}

/// A name that stays taken is seen when the file is to get it.
void MovieFile::makePlace() {
  struct stat status {};
  if (::lstat(path_.c_str(), &status) != 0) return;
  if (!isJustMade(status) && !isInUse(path_)) calls_.unlink(path_);
}

Result<void> MovieFile::openPart() {
  const std::string part = hiddenPartPath(path_);
  file_ = FileDescriptor(calls_.openNew(part));
  if (!file_.isOpen()) return failure(errno);
  markInUse(file_.get());
  partPath_ = part;
  return {};
}

Result<void> MovieFile::takeName() {
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    const int result =
        partPath_.empty() ? calls_.link(file_.get(), path_) : calls_.renameToNew(partPath_, path_);
    if (result == 0) {
      partPath_.clear();
      return {};
    }
    if (errno != EEXIST) break;
    path_ = nextIndexedPath(path_);
  }
  return failure(errno);
}

Result<void> MovieFile::appendFragment(std::span<const uint8_t> head,
                                       std::span<const uint8_t> fragment) {
  if (!hasFragments()) return begin(head, fragment);

  constexpr int64_t kTypeAt = 4;
  std::vector<uint8_t> hidden(fragment.begin(), fragment.end());
  const auto free = box::header(0, "free");
  std::copy_n(free.begin() + kTypeAt, 4, hidden.begin() + kTypeAt);
  auto written = writeWhole(hidden, end_);
  if (written) written = writeWhole(fragment.subspan(kTypeAt, 4), end_ + kTypeAt);
  if (!written) {
    calls_.truncate(file_.get(), end_);
    return written;
  }
  end_ += int64_t(fragment.size());
  return {};
}

/// Writes head and first fragment, and gives the file its name.
Result<void> MovieFile::begin(std::span<const uint8_t> head, std::span<const uint8_t> fragment) {
  const size_t movieAt = box::find(head, "moov");
  const auto gap = box::header(kGap, "free");
  std::vector<uint8_t> bytes(head.begin(), head.begin() + std::ptrdiff_t(movieAt));
  slot_ = int64_t(bytes.size());
  bytes.insert(bytes.end(), gap.begin(), gap.end());
  bytes.resize(bytes.size() + size_t(kGap) - gap.size());
  bytes.insert(bytes.end(), head.begin() + std::ptrdiff_t(movieAt), head.end());
  bytes.insert(bytes.end(), fragment.begin(), fragment.end());
  auto named = writeWhole(bytes, 0);
  if (!named) return named;
  named = takeName();
  if (!named && partPath_.empty()) {
    // Where /proc is not to be had, a nameless file stays nameless.
    closeFile();
    named = openPart();
    if (named) named = writeWhole(bytes, 0);
    if (named) named = takeName();
  }
  if (named) end_ = int64_t(bytes.size());
  return named;
}

Result<void> MovieFile::finish(std::span<const uint8_t> contents) {
  const auto cover = box::header(uint32_t(box::kHeaderSize + contents.size()), "free");
  std::vector<uint8_t> covered(cover.begin(), cover.end());
  covered.insert(covered.end(), contents.begin(), contents.end());
  const int64_t contentsAt = end_ + int64_t(box::kHeaderSize);
  const auto media = box::largeHeader(uint64_t(contentsAt - slot_), "mdat");

  // The table has to be on the disk before anything refers to it, lest a power cut keeps the later
  // write and loses the earlier.
  const auto flushed = [this]() -> Result<void> {
    if (calls_.flushToDisk(file_.get()) != 0) return failure(errno);
    return {};
  };
  auto finished = writeWhole(covered, end_);
  if (finished) finished = flushed();
  if (finished) finished = writeWhole(media, slot_);
  if (!finished) {
    calls_.truncate(file_.get(), end_);
    return finished;
  }
  finished = flushed();
  return finished ? checkName() : finished;
}

/// A movie that was deleted while it was being recorded is not there.
Result<void> MovieFile::checkName() {
  if (calls_.nameCount(file_.get()) == 0) return Error{"its file was deleted"};
  return {};
}

Result<void> MovieFile::writeWhole(std::span<const uint8_t> bytes, int64_t offset) {
  const int code = tessary::writeWhole(calls_, file_.get(), bytes, offset);
  if (code != 0) return failure(code);
  return {};
}

Error MovieFile::failure(int code) const { return {fileErrorText(code, path_)}; }

}  // namespace tessary
