#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include <sys/types.h>

namespace tessary {

/// How long anyone waits at most for a disk that may have stopped answering.
inline constexpr std::chrono::milliseconds kDiskAnswerLimit{2000};

/// Whether `path` is a folder; nothing if its disk does not answer within the limit.
std::optional<bool> isFolder(const std::string& path);

/// What files that must not be lost ask of the file system, as the system calls do it: -1 and errno
/// on failure. Tests put themselves in between to fail, stall or look at any step. Any thread.
class FileCalls {
 public:
  virtual ~FileCalls() = default;
  /// The system's own; lives as long as the process.
  static FileCalls& system();

  /// A new file in `folder` that has no name yet.
  virtual int openNameless(const std::string& folder);
  /// A new file at `path`, where none may be.
  virtual int openNew(const std::string& path);
  /// Gives the nameless file a name that no file has.
  virtual int link(int fd, const std::string& path);
  /// Gives a file another name, which no file has.
  virtual int renameToNew(const std::string& from, const std::string& to);
  virtual int unlink(const std::string& path);
  virtual ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset);
  virtual int truncate(int fd, int64_t length);
  virtual int flushToDisk(int fd);
  /// How many names the file has.
  virtual int nameCount(int fd);
};

/// Writes all of `bytes`; 0, or the error number.
int writeWhole(FileCalls& calls, int fd, std::span<const uint8_t> bytes, int64_t offset);

/// What a failed call for the file at `path` means to the user: "the disk is full".
std::string fileErrorText(int code, const std::string& path);

/// The name of the file that follows `path` within the same second: with the index behind its stem
/// one higher, from 1 on.
std::string nextIndexedPath(const std::string& path);

}  // namespace tessary
