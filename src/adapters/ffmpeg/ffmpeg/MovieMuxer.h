#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/Result.h"
#include "ffmpeg/AvHandles.h"
#include "ffmpeg/MemoryIo.h"

namespace tessary {

/// Makes the pieces of a movie file with libavformat's QuickTime muxer, in memory.
///
/// Two muxers run side by side. The first makes a fragmented movie: its head, then a fragment for
/// every few frames. The second writes an ordinary movie into the void: it is told at which place
/// of the real file each frame has come to lie, and its table of contents is all that is kept of
/// it.
///
/// The real file may hold `gap` bytes more than the head before the first fragment.
class MovieMuxer {
 public:
  using Packets = std::span<const AvHandle<AVPacket>>;

  /// A movie with one track of `parameters`. `creationTime` as ISO 8601 text in UTC.
  static Result<std::unique_ptr<MovieMuxer>> make(const AVCodecParameters& parameters, int32_t gap,
                                                  std::string creationTime);
  ~MovieMuxer();
  MovieMuxer(const MovieMuxer&) = delete;
  MovieMuxer& operator=(const MovieMuxer&) = delete;

  /// The fragmented movie's head: 'ftyp' and a 'moov' without frames.
  std::vector<uint8_t> head();
  /// The next fragment, 'moof' and 'mdat'. Times of `packets` (one at least) are in microseconds.
  /// Each lasts until the next begins, the last for `lastDuration`: never longer than to the frame
  /// that follows, so 1 where that is not known yet.
  Result<std::vector<uint8_t>> fragment(Packets packets, int64_t lastDuration);
  /// To be called when that fragment has been written: its frames count from now on.
  Result<void> place(Packets packets);
  /// The ordinary movie's 'moov', of all frames that were placed, at least one; the very last frame
  /// lasts for `lastDuration`. Last of all.
  Result<std::vector<uint8_t>> contents(int64_t lastDuration);

 private:
  explicit MovieMuxer(std::string creationTime);

  Result<void> openFragments(const AVCodecParameters& parameters, int32_t gap);
  Result<void> openContents(int64_t firstTime);
  Result<AvHandle<AVFormatContext>> open(MemoryIo& io, AvOptions& options);
  Result<void> placeHeld();

  const AvHandle<AVCodecParameters> parameters_ = takeAv(ffmpeg().avcodec_parameters_alloc());
  const std::string creationTime_;
  MemoryIo fragmentsIo_;
  AvHandle<AVFormatContext> fragments_;
  std::vector<uint8_t> head_;
  int64_t payload_ = 0;  // where in the real file the last fragment's frames begin
  int64_t end_ = 0;      // and where the next fragment does
  MemoryIo contentsIo_;
  AvHandle<AVFormatContext> contents_;  // from the first fragment on
  AvHandle<AVPacket> held_;             // the newest frame: how long it lasts is told with the next
  int64_t heldAt_ = 0;                  // where it lies in the real file
  int64_t placedEnd_ = 0;               // where its fragment ends
};

}  // namespace tessary
