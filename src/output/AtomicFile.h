#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "base/FileDescriptor.h"
#include "output/FileSync.h"

namespace tessary {

/// A file that appears under its name whole or not at all. It is written under a hidden name in the
/// same folder and renamed, which replaces a file of that name in one step; without a `commit` that
/// goes well nothing is left of it. After a failure nothing more can be done with it.
class AtomicFile {
 public:
  /// Makes the hidden file. `path` is the final name, with its folder. See `isOpen`.
  explicit AtomicFile(std::string path);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  bool isOpen() const { return file_.isOpen(); }
  /// What went wrong, in plain words; empty if nothing did.
  const std::string& error() const { return error_; }

  /// Appends `bytes`; all of them, or false.
  bool write(std::span<const uint8_t> bytes);
  /// Gives the file its name and closes it, without waiting for the disk: `sync` does that later.
  bool commit(FileSync& sync);

 private:
  void open();
  bool fail(int error);

  const std::string path_;
  std::string hiddenPath_;  // empty when there is nothing to remove
  std::string error_;
  FileDescriptor file_;
};

}  // namespace tessary
