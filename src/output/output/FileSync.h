#pragma once

#include <functional>
#include <memory>
#include <string>

#include <sys/types.h>

#include "base/SerialQueue.h"

namespace tessary {

/// Which file it is, whatever its name is now.
struct FileIdentity {
  dev_t device = 0;
  ino_t number = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// Brings finished files down to the disk on a thread of its own, so that nobody waits for a slow
/// memory stick. A file that the disk then refuses is kept, for it may still be read until the disk
/// goes; the log says so.
class FileSync {
 public:
  /// Flushes an open file or folder; 0, or -1 with errno set.
  using Flush = std::function<int(int fd)>;
  /// Told of a file that may be lost. On the thread of this class.
  using Refused = std::function<void(const std::string& path)>;

  explicit FileSync(Refused refused = {});
  /// For tests, with another `flush` than the system's.
  FileSync(Refused refused, Flush flush);
  // The destructor finishes what is pending, unless the disk does not answer for two seconds.

  /// Returns at once. `path` is left alone if it names another file than `identity` by then. Any
  /// thread.
  void makeDurable(std::string path, FileIdentity identity);
  /// Waits until all that was handed in before is down.
  void drain() { queue_.drain(); }

 private:
  struct Work;

  const std::shared_ptr<const Work> work_;  // shared with the thread, which may be left to itself
  SerialQueue queue_;
};

}  // namespace tessary
