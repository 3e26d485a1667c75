#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <sys/types.h>

namespace tessary {

/// What a movie asks of the file system, as the system calls do it: -1 and errno on failure. Tests
/// put themselves in between to fail, stall or look at any step.
class MovieFileCalls {
 public:
  virtual ~MovieFileCalls() = default;

  /// A new file in `folder` that has no name yet.
  virtual int openNameless(const std::string& folder);
  /// A new file at `path`, where none may be.
  virtual int openNew(const std::string& path);
  /// Gives the nameless file a name that no file has.
  virtual int link(int fd, const std::string& path);
  virtual int unlink(const std::string& path);
  virtual ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset);
  virtual int truncate(int fd, int64_t length);
  virtual int flushToDisk(int fd);
  /// How many names the file has.
  virtual int nameCount(int fd);
};

}  // namespace tessary
