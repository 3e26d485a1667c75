#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/FileCalls.h"
#include "base/FileDescriptor.h"
#include "base/Result.h"
#include "ffmpeg/Boxes.h"

namespace tessary {

/// A movie's file, which can be played at every moment of its making, wherever it is cut short.
///
/// It grows as a fragmented movie and ends as an ordinary one, in place:
///
///     recording:   ftyp | free 16 | moov, empty | moof mdat | moof mdat | ...
///     finishing:   ftyp | free 16 | moov, empty | moof mdat | moof mdat | free { moov, full }
///     finished:    ftyp | mdat ...............................................| moov, full
///
/// - A fragment is written whole with its 'moof' called 'free', which players pass over; then its
///   name is set right: four bytes, of which any mixture is a name that players pass over.
/// - The full table of contents is written inside a 'free' too. Then the 16 free bytes near the
///   beginning become the header of one 'mdat' that spans everything up to that table: one write of
///   16 bytes that turns the one kind of movie into the other. It never crosses a page or a sector.
/// - What could not be written whole is cut off again.
///
/// Under its name the file appears whole, with its first fragment; until then it is nameless, or
/// hidden where a file system has no nameless files. What lies at the name is replaced, but not
/// what another program is writing or has just written: then the movie gets the next name of that
/// second. One thread at a time.
class MovieFile {
 public:
  /// More bytes than the head has before the first fragment.
  static constexpr int32_t kGap = int32_t(box::kLargeHeaderSize);

  MovieFile(std::string path, FileCalls& calls);
  /// Closes the file; without a fragment there is none.
  ~MovieFile();
  MovieFile(const MovieFile&) = delete;
  MovieFile& operator=(const MovieFile&) = delete;

  /// Makes the file, without a name, in a folder that exists.
  Result<void> open();
  /// Adds a fragment; before the first, `head`. On failure the movie is as it was.
  Result<void> appendFragment(std::span<const uint8_t> head, std::span<const uint8_t> fragment);
  /// Makes an ordinary movie of it. On failure it stays a fragmented one. Once.
  Result<void> finish(std::span<const uint8_t> contents);

  bool hasFragments() const { return end_ > 0; }

 private:
  void makePlace();
  Result<void> openPart();
  Result<void> takeName();
  void closeFile();
  Result<void> writeWhole(std::span<const uint8_t> bytes, int64_t offset);
  Result<void> begin(std::span<const uint8_t> head, std::span<const uint8_t> fragment);
  Error failure(int code) const;
  Result<void> checkName();

  std::string path_;
  FileCalls& calls_;
  FileDescriptor file_;
  std::string partPath_;  // of a hidden file that has not got its name yet
  int64_t slot_ = 0;      // where the 16 free bytes are
  int64_t end_ = 0;       // of the last fragment; 0 before the first
};

}  // namespace tessary
