#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "base/FileCalls.h"
#include "base/FileDescriptor.h"
#include "output/FileSync.h"

namespace tessary {

/// A file that appears under its name whole or not at all, in place of a file of that name. Until
/// then it has no name, so that nothing is left of it when the process is killed; where a file
/// system has no nameless files it is hidden beside its name. One thread at a time.
class AtomicFile {
 public:
  /// Makes the file, still without its name. `path` is the final name, with its folder. See
  /// `isOpen`.
  explicit AtomicFile(std::string path, FileCalls& calls = FileCalls::system());
  /// Without a `save` that went well nothing is left of it.
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  bool isOpen() const { return file_.isOpen(); }
  /// The error number of what went wrong; 0 if nothing did.
  int error() const { return error_; }

  /// Writes `bytes`, gives the file its name and closes it, without waiting for the disk. False on
  /// failure; then nothing more can be done with it.
  bool save(std::span<const uint8_t> bytes);
  /// Which file it is, once saved.
  FileIdentity identity() const { return identity_; }

 private:
  bool openNameless();
  bool openPart();
  bool write(std::span<const uint8_t> bytes);
  bool takeName();
  bool fail(int error);

  const std::string path_;
  FileCalls& calls_;
  std::string partPath_;  // while it has a hidden name
  FileDescriptor file_;
  FileIdentity identity_;
  int error_ = 0;
};

}  // namespace tessary
