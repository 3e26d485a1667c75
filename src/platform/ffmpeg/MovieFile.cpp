#include "platform/ffmpeg/MovieFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

namespace tessary {
namespace {

/// What a system call's failure means to the user.
std::string reasonOf(int code, const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  switch (code) {
    case ENOSPC:
    case EDQUOT: return "the disk is full";
    case EFBIG: return "the file has become as large as the disk allows";
    case ENOENT:
    case ENOTDIR: return fmt::format("the folder \"{}\" is gone", folder);
    case EACCES:
    case EPERM: return fmt::format("the folder \"{}\" may not be written to", folder);
    case EROFS: return "the disk can only be read";
    case EEXIST: return "there is a file of this name already";
    case EIO:
    case ENODEV:
    case ENXIO: return "the disk does not answer";
    default: return std::generic_category().message(code);
  }
}

}  // namespace

MovieFile::MovieFile(std::string path, MovieFileCalls& calls)
    : path_(std::move(path)), calls_(calls) {}

MovieFile::~MovieFile() {
  if (fd_ < 0) return;
  if (hasName_ && !hasFragments()) calls_.unlink(path_);
  closeFile();
}

void MovieFile::closeFile() {
  ::close(std::exchange(fd_, -1));
  hasName_ = false;
}

bool MovieFile::open() {
  const auto path = std::filesystem::path(path_);
  std::error_code ignored;
  if (std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) return fail(EEXIST);
  fd_ = calls_.openNameless(path.parent_path().string());
  if (fd_ >= 0) return true;
  // Not every file system has nameless files (EOPNOTSUPP), nor did every kernel (EISDIR, ENOENT):
  // see whether the file can be made, and make it when there is something to put into it.
  if (!openUnderName()) return false;
  calls_.unlink(path_);
  closeFile();
  return true;
}

bool MovieFile::openUnderName() {
  fd_ = calls_.openNew(path_);
  hasName_ = fd_ >= 0;
  return fd_ >= 0 || fail(errno);
}

bool MovieFile::appendFragment(std::span<const uint8_t> head, std::span<const uint8_t> fragment) {
  if (!hasFragments()) return begin(head, fragment);

  constexpr int64_t kTypeAt = 4;
  std::vector<uint8_t> hidden(fragment.begin(), fragment.end());
  const auto free = box::header(0, "free");
  std::copy_n(free.begin() + kTypeAt, 4, hidden.begin() + kTypeAt);
  if (!writeWhole(hidden, end_) || !writeWhole(fragment.subspan(kTypeAt, 4), end_ + kTypeAt)) {
    calls_.truncate(fd_, end_);
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
  if (fd_ < 0 && !openUnderName()) return false;
  if (!writeWhole(bytes, 0)) return false;
  if (!hasName_ && calls_.link(fd_, path_) != 0) {
    if (errno == EEXIST) return fail(errno);
    // Where /proc is not to be had, a nameless file stays nameless.
    closeFile();
    if (!openUnderName() || !writeWhole(bytes, 0)) return false;
  }
  hasName_ = true;
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
  const auto synced = [this] { return calls_.flushToDisk(fd_) == 0 || fail(errno); };
  if (!writeWhole(covered, end_) || !synced() || !writeWhole(media, slot_)) {
    calls_.truncate(fd_, end_);
    return false;
  }
  return synced() && checkName();
}

/// A movie that was deleted while it was being recorded is not there.
bool MovieFile::checkName() {
  if (calls_.nameCount(fd_) != 0) return true;
  error_ = "its file was deleted";
  return false;
}

bool MovieFile::writeWhole(std::span<const uint8_t> bytes, int64_t offset) {
  while (!bytes.empty()) {
    const ssize_t written = calls_.writeAt(fd_, bytes, offset);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return fail(errno);
    if (written == 0) return fail(ENOSPC);
    bytes = bytes.subspan(size_t(written));
    offset += written;
  }
  return true;
}

bool MovieFile::fail(int code) {
  error_ = reasonOf(code, path_);
  return false;
}

}  // namespace tessary
