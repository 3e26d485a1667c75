#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/Result.h"
#include "base/SampleBuffer.h"

namespace tessary {

/// How a movie's one video track is encoded.
struct MovieSettings {
  int32_t width = 0;           ///< Pixels.
  int32_t height = 0;          ///< Pixels.
  int32_t averageBitRate = 0;  ///< Bits a second.
  int32_t expectedSourceFrameRate = 30;
  int32_t maxKeyFrameInterval = 30;  ///< Frames.
  friend bool operator==(const MovieSettings&, const MovieSettings&) = default;
};

/// Writes one movie: H.264 in a QuickTime container, each frame with the time stamp that it came
/// with. Made, fed and finished on the recording queue, which it never keeps waiting for the disk;
/// a thread of its own encodes and writes. Destroying a writer that was not finished leaves a
/// playable movie of what it was given. A movie without a frame leaves no file.
class AssetWriter {
 public:
  virtual ~AssetWriter() = default;

  virtual bool canApplyOutputSettings(const MovieSettings& settings) const = 0;
  /// Opens the encoder, and begins to open the file; one that can't be made is told later, by
  /// `error`.
  virtual Result<void> startWriting(const MovieSettings& settings) = 0;
  /// The movie's timeline begins at `time`.
  virtual void startSessionAtSourceTime(MediaTime time) = 0;
  /// Whether a frame would be taken now. Frames are never queued up without bound: one that comes
  /// while this is false is lost to the movie.
  virtual bool isReadyForMoreMediaData() const = 0;
  /// Takes a frame; returns at once. Fails when it can't be used: no session yet, another size than
  /// the movie's, a time stamp that does not follow, a disk that is full.
  virtual Result<void> appendSampleBuffer(const SampleBuffer& frame) = 0;
  /// Finishes the file, then calls `completed` once, on a thread of the writer's own; until then
  /// the writer must be kept. Nothing is appended any more.
  virtual void finishWritingWithCompletionHandler(std::function<void()> completed) = 0;
  /// Why the movie has ended before its time, or never began, so that no frame gets into it any
  /// more; empty as long as nothing is wrong with it. A frame that was refused is no fault of the
  /// movie. Any thread.
  virtual std::string error() const = 0;
};

/// Makes a writer for the file at `path` (UTF-8, absolute), in place of what lies there; what
/// another program is writing there is left alone, and the movie gets the next name.
using AssetWriterFactory =
    std::function<Result<std::unique_ptr<AssetWriter>>(const std::string& path)>;

}  // namespace tessary
