#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/PixelBuffer.h"
#include "ffmpeg/MovieEncoder.h"
#include "ffmpeg/MovieFile.h"
#include "ffmpeg/MovieMuxer.h"

namespace tessary {

/// The thread's half of a movie writer: takes frames from a short queue, encodes them and adds them
/// to the file, several times a second.
class MovieRecorder {
 public:
  /// Frames that wait for the encoder at most: what a stall of a tenth of a second costs at 30 a
  /// second, and few enough to be lost with the process.
  static constexpr size_t kQueueCapacity = 4;
  /// And none is taken when the newest is this much younger than the one at the encoder,
  /// microseconds, or when the encoder, as slow as it was with the last one, needs longer for what
  /// is there: a machine that is far too busy must not make the movie's end late.
  static constexpr int64_t kQueueSpan = 150'000;
  /// And none while the oldest that is not in the file yet has waited for longer: what a killed
  /// process loses stays below half a second, however busy the machine is.
  static constexpr std::chrono::milliseconds kLongestUnwritten{300};

  static Result<std::shared_ptr<MovieRecorder>> make(std::unique_ptr<MovieEncoder> encoder,
                                                     std::unique_ptr<MovieFile> file);

  // Any thread.
  bool hasRoom() const;
  /// `time` in microseconds of the movie's timeline. False when there is no room, nothing more is
  /// taken, or writing has failed.
  bool push(std::shared_ptr<const PixelBuffer> picture, int64_t time);
  /// Nothing more is taken; what has been is written and the file finished, then `completed` (which
  /// may be empty) is called on the thread of run().
  void stop(std::function<void()> completed);
  /// The completion is not called any more. False if it has been, or is being called.
  bool forgetCompletion();
  /// Why writing failed; empty if it did not.
  std::string error() const;
  /// Frames that lie in the file.
  int64_t framesWritten() const;

  /// Works until stop(), finishes the file and hands out the completion. A failure finishes the
  /// file at once.
  std::function<void()> run();

 private:
  using SteadyClock = std::chrono::steady_clock;
  struct Frame {
    std::shared_ptr<const PixelBuffer> picture;
    int64_t time;
  };
  /// A frame that is not in the file yet.
  struct Unwritten {
    int64_t time;
    SteadyClock::time_point since;
  };

  MovieRecorder(std::unique_ptr<MovieEncoder> encoder, std::unique_ptr<MovieMuxer> muxer,
                std::unique_ptr<MovieFile> file);

  bool hasRoomLocked() const;
  std::optional<Frame> nextFrame();
  void frameIsDone(SteadyClock::time_point began);
  bool goesOn() const;
  void openFile();
  void work();
  void encode(const Frame& frame);
  void collect(MovieEncoder::Packets packets);
  std::optional<int64_t> timeOfNextFrame() const;
  bool isFragmentDue(bool framesWait) const;
  void writeFragment(size_t frames, int64_t lastDuration);
  void writeDueFragment();
  void finish();
  void fail(const std::string& reason);

  // The recording thread's own.
  std::unique_ptr<MovieEncoder> encoder_;
  std::unique_ptr<MovieMuxer> muxer_;
  std::unique_ptr<MovieFile> file_;
  MovieEncoder::Packets pending_;    // encoded, not yet in the file
  SteadyClock::time_point dueAt_;    // when what is pending has to be in the file
  std::optional<int64_t> lastTime_;  // of the last frame encoded
  int64_t lastInterval_;             // between the last two frames, microseconds

  mutable std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  std::deque<Frame> queue_;
  int64_t timeAtEncoder_ = 0;  // of the frame taken out last
  std::deque<Unwritten> unwritten_;
  bool isAtWork_ = false;  // with a frame, from the queue to the file
  std::chrono::microseconds lastFrameTook_{0};
  bool stopping_ = false;
  std::function<void()> completed_;
  bool completionHandedOut_ = false;
  std::string error_;
  int64_t framesWritten_ = 0;
};

}  // namespace tessary
