#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/FileCalls.h"
#include "base/SerialQueue.h"
#include "platform/AssetWriter.h"

namespace tessary {

class MovieRecorder;

/// Writes H.264 into a QuickTime file with FFmpeg's libraries, on a thread of its own.
///
/// While it is recorded the movie is fragmented, and all but the last fraction of a second survives
/// the death of the process; when it is finished it is an ordinary movie. A writer may be destroyed
/// by its own completion handler.
///
/// Its thread alone touches the disk. A disk that does not answer keeps the end of a writer waiting
/// until `kEndLimit` after it was told to finish; then thread and file are left to themselves, and
/// the completion is never called.
///
/// What ends the recording (a full disk) is logged once; the frames before it make a movie.
class FfmpegAssetWriter final : public AssetWriter {
 public:
  static constexpr std::chrono::seconds kEndLimit{8};

  /// `path` is absolute. `calls` outlives the writer and its thread.
  explicit FfmpegAssetWriter(std::string path);
  FfmpegAssetWriter(std::string path, FileCalls& calls,
                    std::chrono::milliseconds endLimit = kEndLimit);
  ~FfmpegAssetWriter() override;
  FfmpegAssetWriter(const FfmpegAssetWriter&) = delete;
  FfmpegAssetWriter& operator=(const FfmpegAssetWriter&) = delete;

  bool canApplyOutputSettings(const MovieSettings& settings) const override;
  Result<void> startWriting(const MovieSettings& settings) override;
  void startSessionAtSourceTime(MediaTime time) override;
  /// True also after a failure: then appending tells what it was.
  bool isReadyForMoreMediaData() const override;
  Result<void> appendSampleBuffer(const SampleBuffer& frame) override;
  void finishWritingWithCompletionHandler(std::function<void()> completed) override;
  std::string error() const override;

  /// Frames that lie in the file. Any thread.
  int64_t framesWritten() const;

 private:
  Result<void> open(const MovieSettings& settings);
  void startThread(std::function<void()> work);
  Result<void> accepts(const SampleBuffer& frame) const;

  const std::string path_;
  FileCalls& calls_;
  const std::chrono::milliseconds endLimit_;
  MovieSettings settings_;
  std::optional<MediaTime> sessionStart_;
  std::optional<MediaTime> lastTime_;
  bool finishing_ = false;
  std::chrono::steady_clock::time_point endsBy_{};  // once finishing

  std::unique_ptr<SerialQueue> queue_;  // from the start on

  mutable std::mutex mutex_;                 // guards all below where another thread may ask
  std::shared_ptr<MovieRecorder> recorder_;  // once writing; the thread holds it too
  std::string failure_;                      // to start
};

/// Makes FfmpegAssetWriters.
AssetWriterFactory makeFfmpegAssetWriterFactory();

}  // namespace tessary
