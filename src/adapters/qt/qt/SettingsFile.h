#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <unistd.h>

#include "base/FileCalls.h"
#include "base/FileDescriptor.h"
#include "base/Result.h"
#include "base/SerialQueue.h"

namespace tessary {

/// A small text file of the user's, read and replaced whole. Its disk is touched on threads of its
/// own, as it may be slow or stop answering: nobody waits longer than two seconds, and nobody
/// waits for what is written to be down. Main thread.
class SettingsFile {
 public:
  /// What is larger has not been written by this program.
  static constexpr size_t kMostBytes = 1'000'000;

  /// What a test may change.
  struct Disk {
    /// How long a call waits, and how long while the last one was not answered.
    std::chrono::milliseconds answerLimit = kDiskAnswerLimit;
    std::chrono::milliseconds answerLimitAfterSilence{100};
    /// Called before each look at the disk, on the thread that looks; may take its time.
    std::function<void()> touch = [] {};
    /// Brings an open file or folder down; 0, or -1 with errno set.
    std::function<int(int fd)> flush = ::fsync;
  };

  /// `path` in UTF-8.
  explicit SettingsFile(std::string path);
  SettingsFile(std::string path, Disk disk);
  // The destructor waits for the disk, but not for one that is silent.

  const std::string& path() const { return path_; }

  /// The text, empty where there is no file; fails if there is one that can't be read. Whatever is
  /// no regular file of at most kMostBytes is renamed, so that nothing is lost, and counts as none;
  /// the log says so.
  Result<std::string> read();
  /// Puts `text` in the file's place in one step, or leaves the file as it was and fails. What is
  /// replaced survives this process; a thread brings it down to the disk.
  Result<void> replace(std::string text);
  /// Waits until all that was replaced is down.
  void drain() { sync_.drain(); }

 private:
  static Result<std::string> readNow(const std::string& path);
  /// What was written.
  static Result<std::shared_ptr<FileDescriptor>> replaceNow(const std::string& path,
                                                            const std::string& text);
  /// On the disk's thread, which may outlive this object: `look` owns all that it uses.
  template <typename Look>
  auto ask(Look look) -> decltype(look());

  const std::string path_;
  const Disk disk_;
  bool silent_ = false;  // the last call was not answered
  SerialQueue look_;
  SerialQueue sync_;
};

}  // namespace tessary
