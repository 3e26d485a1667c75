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

bool MovieFile::open() {
  makePlace();
  const std::string folder = std::filesystem::path(path_).parent_path().string();
  file_ = FileDescriptor(calls_.openNameless(folder));
  if (!file_.isOpen()) {
    // Not every file system has nameless files (EOPNOTSUPP), nor did every kernel (EISDIR, ENOENT).
    removeAbandonedParts(folder);
    return openPart();
  }
  markInUse(file_.get());
  return true;
}

/// A name that stays taken is seen when the file is to get it.
void MovieFile::makePlace() {
  struct stat status {};
  if (::lstat(path_.c_str(), &status) != 0) return;
  if (!isJustMade(status) && !isInUse(path_)) calls_.unlink(path_);
}

bool MovieFile::openPart() {
  const std::string part = hiddenPartPath(path_);
  file_ = FileDescriptor(calls_.openNew(part));
  if (!file_.isOpen()) return fail(errno);
  markInUse(file_.get());
  partPath_ = part;
  return true;
}

bool MovieFile::takeName() {
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    const int result =
        partPath_.empty() ? calls_.link(file_.get(), path_) : calls_.renameToNew(partPath_, path_);
    if (result == 0) {
      partPath_.clear();
      return true;
    }
    if (errno != EEXIST) break;
    path_ = nextIndexedPath(path_);
  }
  return fail(errno);
}

bool MovieFile::appendFragment(std::span<const uint8_t> head, std::span<const uint8_t> fragment) {
  if (!hasFragments()) return begin(head, fragment);

  constexpr int64_t kTypeAt = 4;
  std::vector<uint8_t> hidden(fragment.begin(), fragment.end());
  const auto free = box::header(0, "free");
  std::copy_n(free.begin() + kTypeAt, 4, hidden.begin() + kTypeAt);
  if (!writeWhole(hidden, end_) || !writeWhole(fragment.subspan(kTypeAt, 4), end_ + kTypeAt)) {
    calls_.truncate(file_.get(), end_);
    return false;
  }
  end_ += int64_t(fragment.size());
  return true;
}

/// Writes head and first fragment, and gives the file its name.
bool MovieFile::begin(std::span<const uint8_t> head, std::span<const uint8_t> fragment) {
  const size_t movieAt = box::find(head, "moov");
  const auto gap = box::header(kGap, "free");
  std::vector<uint8_t> bytes(head.begin(), head.begin() + std::ptrdiff_t(movieAt));
  slot_ = int64_t(bytes.size());
  bytes.insert(bytes.end(), gap.begin(), gap.end());
  bytes.resize(bytes.size() + size_t(kGap) - gap.size());
  bytes.insert(bytes.end(), head.begin() + std::ptrdiff_t(movieAt), head.end());
  bytes.insert(bytes.end(), fragment.begin(), fragment.end());
  if (!writeWhole(bytes, 0)) return false;
  if (!takeName()) {
    if (!partPath_.empty()) return false;
    // Where /proc is not to be had, a nameless file stays nameless.
    closeFile();
    if (!openPart() || !writeWhole(bytes, 0) || !takeName()) return false;
  }
  end_ = int64_t(bytes.size());
  return true;
}

bool MovieFile::finish(std::span<const uint8_t> contents) {
  const auto cover = box::header(uint32_t(box::kHeaderSize + contents.size()), "free");
  std::vector<uint8_t> covered(cover.begin(), cover.end());
  covered.insert(covered.end(), contents.begin(), contents.end());
  const int64_t contentsAt = end_ + int64_t(box::kHeaderSize);
  const auto media = box::largeHeader(uint64_t(contentsAt - slot_), "mdat");

  // The table has to be on the disk before anything refers to it, lest a power cut keeps the later
  // write and loses the earlier.
  const auto synced = [this] { return calls_.flushToDisk(file_.get()) == 0 || fail(errno); };
  if (!writeWhole(covered, end_) || !synced() || !writeWhole(media, slot_)) {
    calls_.truncate(file_.get(), end_);
    return false;
  }
  return synced() && checkName();
}

/// A movie that was deleted while it was being recorded is not there.
bool MovieFile::checkName() {
  if (calls_.nameCount(file_.get()) != 0) return true;
  error_ = "its file was deleted";
  return false;
}

bool MovieFile::writeWhole(std::span<const uint8_t> bytes, int64_t offset) {
  const int code = tessary::writeWhole(calls_, file_.get(), bytes, offset);
  return code == 0 || fail(code);
}

bool MovieFile::fail(int code) {
  error_ = fileErrorText(code, path_);
  return false;
}

}  // namespace tessary
