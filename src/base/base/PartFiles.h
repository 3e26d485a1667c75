#pragma once
// Files that are still being written, hidden beside the name that they are going to have.

#include <string>

namespace tessary {

/// A hidden name beside `path`, ".NAME.PROCESS-NUMBER.part", that no other file of this process
/// has.
std::string hiddenPartPath(const std::string& path);

/// Says that the file is being written for as long as `fd` is open, to whoever asks with `isInUse`.
/// Advice only; where a file system has no locks, nothing comes of it.
void markInUse(int fd);

/// Whether another program, or another open file of this one, is writing the regular file at
/// `path`.
bool isInUse(const std::string& path);

/// Removes the hidden files in `folder` whose processes were killed over them.
void removeAbandonedParts(const std::string& folder);

}  // namespace tessary
