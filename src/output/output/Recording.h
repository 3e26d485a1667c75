#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/Executor.h"
#include "base/Geometry.h"
#include "base/Lifetime.h"
#include "base/SampleBuffer.h"
#include "output/PreviewViewRecordDelegate.h"
#include "output/RecordingFailures.h"
#include "output/RecordingStatus.h"
#include "platform/AssetWriter.h"

namespace tessary {

/// Bits a second for a movie of `size`; the arithmetic is in 32 bits throughout.
int32_t movieBitRate(TextureSize size) noexcept;

/// Records the camera's frames, as they came, into one movie after the other. All work with the
/// writer is done on the recording queue, so that nobody waits for it.
///
///     any --start--> 4 --first frame--> 5        any --start that fails--> 1
///     any --stop---> 2 --writer finished--> 3    (with an error: stays 2)
class Recording {
 public:
  /// Frames on their way to the recording queue; more than this are lost, counted.
  static constexpr int kFramesUnderWay = 8;

  Recording(AssetWriterFactory makeWriter, Executor& mainQueue, FailureListener& failures);
  /// With another queue than the thread "com.tessary.record.session", and another limit to the time
  /// that the destructor waits for movies to be finished.
  Recording(AssetWriterFactory makeWriter, Executor& mainQueue, FailureListener& failures,
            std::unique_ptr<Executor> recordingQueue, std::chrono::milliseconds finishLimit);
  /// Finishes.
  ~Recording();
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  /// Any thread, never waits.
  int64_t recordingStatus() const { return _recordingStatus; }
  /// Frames of the movie that runs, or ran last, that are not in it. Any thread, never waits.
  uint64_t lostFrames() const { return lostFrames_; }

  /// Whom to tell; kept weakly. It may be let go on the recording queue if its owner drops it in
  /// the middle of a call, so it must not be a widget. Any thread.
  void setRecordDelegate(std::weak_ptr<PreviewViewRecordDelegate> delegate);

  /// Frames later than `seconds` behind the first are not recorded, however late the stop comes; 0
  /// for no limit. From now on, for the movie that runs too. Any thread.
  void setLimit(int32_t seconds) { limit_ = seconds; }
  /// Starts a movie of `size` in `file` (UTF-8, absolute), in place of what is there. A movie that
  /// still runs is finished without a word to the delegate. Returns at once. Main thread.
  void startRecord(std::string file, std::weak_ptr<PreviewViewRecordDelegate> delegate,
                   TextureSize size);
  /// Returns at once. Main thread.
  void stopRecord();
  /// Finishes a movie that still runs, without a word to the delegate, and waits for that within
  /// limits. Nothing is recorded afterwards. Main thread; no other call may be on its way.
  void finish();
  /// Passes a frame on, or loses it, counted, while too many are on their way. Returns at once.
  /// Frame queue, while `recordingTakesFrames`.
  void appendMovieFrame(SampleBuffer frame);

 private:
  /// A writer from its stop until it has finished.
  struct Finishing {
    std::unique_ptr<AssetWriter> writer;
    std::string file;
    bool done = false;
  };

  // On the recording queue.
  void openWriter(const std::string& file, TextureSize size);
  bool setupAssetWriterVideoInput(TextureSize size);
  void startFailed(const std::string& reason);
  void handleFrame(const SampleBuffer& frame);
  void finishWriter(bool stopped);
  void dropFinishedWriters();

  /// On the writer's own thread. `stopped` if a stop asked for it, `start` which start was the last
  /// one then.
  void writerDidFinish(const AssetWriter* writer, bool stopped, uint64_t start);
  /// Main thread.
  void didStop(uint64_t start);
  bool isPastLimit(MediaTime time) const;
  void loseFrame(MediaTime time);
  void tellDelegate(int64_t status);

  const AssetWriterFactory makeWriter_;
  Executor& mainQueue_;
  const std::chrono::milliseconds finishLimit_;

  std::atomic<int64_t> _recordingStatus{kRecordingNone};
  std::atomic<int> framesUnderWay_{0};
  std::atomic<uint64_t> lostFrames_{0};
  std::atomic<int32_t> limit_{0};  // seconds
  RecordingFailures failures_;

  std::mutex delegateMutex_;  // guards _recordDelegate; nothing is called with it held
  std::weak_ptr<PreviewViewRecordDelegate> _recordDelegate;

  // Guards the writing of the status, and all below down to finished_. What only the recording
  // queue changes, it also reads without the lock.
  std::mutex recordingMutex_;
  std::unique_ptr<AssetWriter> _assetWriter;       // from a start to its stop
  std::optional<MovieSettings> _assetWriterInput;  // how its one input, video, is set up
  bool _haveStartedRecording = false;              // the timeline has begun with a first frame
  MediaTime firstTime_{0};                         // of that frame
  std::string file_;                               // of _assetWriter
  uint64_t writtenFrames_ = 0;                     // by _assetWriter
  uint64_t starts_ = 0;
  std::vector<Finishing> finishing_;
  std::condition_variable finished_;

  const Lifetime lifetime_;
  std::unique_ptr<Executor> _recordingQueue;  // last: its work uses all of the above
};

}  // namespace tessary
