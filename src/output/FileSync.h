#pragma once

#include <functional>
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
/// memory stick. A file that the disk then refuses is removed again, since what is under its name
/// would be broken, and the log says so.
class FileSync {
 public:
  /// Flushes an open file or folder; 0, or -1 with errno set.
  using Flush = std::function<int(int fd)>;

  FileSync();
  /// For tests, with another `flush` than the system's.
  explicit FileSync(Flush flush);
  // The destructor finishes what is pending.

  /// Returns at once. `path` is left alone if it names another file than `identity` by then. Any
  /// thread.
  void makeDurable(std::string path, FileIdentity identity);
  /// Waits until all that was handed in before is down.
  void drain() { queue_.drain(); }

 private:
  void syncFile(const std::string& path, FileIdentity identity) const;
  /// The error number, 0 for none.
  int flush(int fd) const;

  const Flush flush_;
  SerialQueue queue_{"com.tessary.file.sync"};  // last: it uses the above
};

}  // namespace tessary
