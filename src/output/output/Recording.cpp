#include "output/Recording.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "base/Log.h"
#include "base/SerialQueue.h"
#include "base/Truncate.h"

namespace tessary {
namespace {

constexpr int32_t kSmallPicture = 640 * 480;
constexpr float kSmallPictureFactor = 4.05F;
constexpr float kPictureFactor = 10.1F;

/// What the user waits for at the most when the program ends; what is not finished by then is still
/// playable.
constexpr std::chrono::seconds kFinishLimit{8};

}  // namespace

int32_t movieBitRate(TextureSize size) noexcept {
  const auto pixels = int32_t(uint32_t(size.width) * uint32_t(size.height));  // wraps
  const float factor = pixels <= kSmallPicture ? kSmallPictureFactor : kPictureFactor;
  return truncateToInt32(float(pixels) * factor);
}

Recording::Recording(AssetWriterFactory makeWriter, Executor& mainQueue, FailureListener& failures)
    : Recording(std::move(makeWriter), mainQueue, failures,
                std::make_unique<SerialQueue>("com.tessary.record.session"), kFinishLimit) {}

Recording::Recording(AssetWriterFactory makeWriter, Executor& mainQueue, FailureListener& failures,
                     std::unique_ptr<Executor> recordingQueue,
                     std::chrono::milliseconds finishLimit)
    : makeWriter_(std::move(makeWriter)),
      mainQueue_(mainQueue),
      finishLimit_(finishLimit),
      failures_(mainQueue, failures),
      _recordingQueue(std::move(recordingQueue)) {}

Recording::~Recording() { finish(); }

void Recording::finish() {
  setRecordDelegate({});
  std::unique_ptr<Executor> queue;
  {
    // Writers that finish from now on find no queue, and wait to be dropped here.
    const std::lock_guard lock(recordingMutex_);
    queue = std::move(_recordingQueue);
  }
  if (!queue) return;
  queue.reset();  // runs what is queued; after that this thread is the recording queue
  finishWriter(false);

  std::vector<Finishing> writers;
  {
    std::unique_lock lock(recordingMutex_);
    const auto allDone = [this] { return std::ranges::all_of(finishing_, &Finishing::done); };
    finished_.wait_for(lock, finishLimit_, allDone);
    writers = std::move(finishing_);
    finishing_.clear();
  }
  for (const Finishing& movie : writers) {
    if (!movie.done) log("The movie {} could not be finished in time", movie.file);
  }
  // The writers end here, and their threads with them, while all that they may call still stands.
}

void Recording::setRecordDelegate(std::weak_ptr<PreviewViewRecordDelegate> delegate) {
  const std::lock_guard lock(delegateMutex_);
  _recordDelegate = std::move(delegate);
}

void Recording::tellDelegate(int64_t status) {
  std::shared_ptr<PreviewViewRecordDelegate> delegate;
  {
    const std::lock_guard lock(delegateMutex_);
    delegate = _recordDelegate.lock();
  }
  if (delegate) delegate->recordStatusDidChange(status);
}

void Recording::startRecord(std::string file, std::weak_ptr<PreviewViewRecordDelegate> delegate,
                            TextureSize size) {
  if (!_recordingQueue) return;
  setRecordDelegate(std::move(delegate));
  _recordingQueue->post([this, file = std::move(file), size] { openWriter(file, size); });
}

void Recording::openWriter(const std::string& file, TextureSize size) {
  finishWriter(false);
  failures_.movieBegan();

  auto writer = makeWriter_(file);
  const std::string refusal = writer.error();
  {
    const std::lock_guard lock(recordingMutex_);
    ++starts_;
    _assetWriter = writer ? *std::move(writer) : nullptr;
    file_ = file;
    writtenFrames_ = 0;
    lostFrames_ = 0;
  }
  if (!_assetWriter) return startFailed(refusal);
  if (!setupAssetWriterVideoInput(size)) {
    return startFailed(
        fmt::format("a movie of {} by {} pixels can't be made", size.width, size.height));
  }
  // A writer that can't start is kept all the same; that its frames are lost one by one is meant.
  if (const auto started = _assetWriter->startWriting(*_assetWriterInput); !started) {
    log("The movie {} can't be written: {}", file, started.error());
    failures_.movieFailed(started.error());
  }
  const std::lock_guard lock(recordingMutex_);
  _recordingStatus = kRecordingWaiting;
  _haveStartedRecording = false;
  tellDelegate(kRecordingWaiting);
}

bool Recording::setupAssetWriterVideoInput(TextureSize size) {
  MovieSettings settings;
  settings.width = size.width;
  settings.height = size.height;
  settings.averageBitRate = movieBitRate(size);
  if (!_assetWriter->canApplyOutputSettings(settings)) return false;
  const std::lock_guard lock(recordingMutex_);
  _assetWriterInput = settings;
  return true;
}

void Recording::startFailed(const std::string& reason) {
  log("The recording to {} did not start: {}", file_, reason);
  failures_.movieFailed(fmt::format("The recording did not start: {}.", reason));
  std::unique_ptr<AssetWriter> writer;
  {
    const std::lock_guard lock(recordingMutex_);
    _recordingStatus = kRecordingStartFailed;
  }
  tellDelegate(kRecordingStartFailed);
  {
    const std::lock_guard lock(recordingMutex_);
    writer = std::move(_assetWriter);
    _assetWriterInput.reset();
  }
}

void Recording::appendMovieFrame(SampleBuffer frame) {
  if (++framesUnderWay_ > kFramesUnderWay) {
    --framesUnderWay_;
    log("Dropping buffer");
    loseFrame(frame.presentationTimeStamp);
    return;
  }
  _recordingQueue->post([this, frame = std::move(frame)] {
    handleFrame(frame);
    --framesUnderWay_;
  });
}

void Recording::handleFrame(const SampleBuffer& frame) {
  const std::lock_guard lock(recordingMutex_);
  // A frame that comes after the stop finds no writer. That it can begin the recording by its
  // status is meant; nothing comes of it.
  const MediaTime time = frame.presentationTimeStamp;
  if (!_haveStartedRecording) {
    if (_assetWriter) _assetWriter->startSessionAtSourceTime(time);
    _haveStartedRecording = true;
    firstTime_ = time;
    _recordingStatus = kRecordingRunning;
    tellDelegate(kRecordingRunning);
  }
  if (isPastLimit(time)) return;
  if (!_assetWriter || !_assetWriter->isReadyForMoreMediaData()) {
    log("Dropping buffer");
    ++lostFrames_;
    if (_assetWriter) failures_.frameLost(time);
  } else if (const auto appended = _assetWriter->appendSampleBuffer(frame)) {
    ++writtenFrames_;
    failures_.frameTaken(time);
  } else {
    log("{}", appended.error());
    if (const auto error = _assetWriter->error(); !error.empty()) failures_.movieFailed(error);
    loseFrame(time);
  }
}

bool Recording::isPastLimit(MediaTime time) const {
  const std::chrono::seconds limit(limit_);
  return limit.count() > 0 && time - firstTime_ >= limit;
}

void Recording::loseFrame(MediaTime time) {
  ++lostFrames_;
  failures_.frameLost(time);
}

void Recording::stopRecord() {
  if (!_recordingQueue) return;
  _recordingQueue->post([this] {
    {
      const std::lock_guard lock(recordingMutex_);
      _recordingStatus = kRecordingStopping;
      tellDelegate(kRecordingStopping);
    }
    finishWriter(true);
  });
}

void Recording::finishWriter(bool stopped) {
  AssetWriter* writer = nullptr;
  uint64_t start = 0;
  {
    const std::lock_guard lock(recordingMutex_);
    if (!_assetWriter) return;
    const uint64_t lost = lostFrames_;
    if (lost > 0) {
      log("{} of {} frames are missing from the movie {}", lost, lost + writtenFrames_, file_);
    }
    writer = _assetWriter.get();
    start = starts_;
    finishing_.push_back({std::move(_assetWriter), file_, false});
    _assetWriterInput.reset();
  }
  writer->finishWritingWithCompletionHandler(
      [this, writer, stopped, start] { writerDidFinish(writer, stopped, start); });
}

void Recording::writerDidFinish(const AssetWriter* writer, bool stopped, uint64_t start) {
  const std::lock_guard lock(recordingMutex_);
  const auto movie = std::ranges::find_if(
      finishing_, [writer](const Finishing& each) { return each.writer.get() == writer; });
  if (movie == finishing_.end()) return;  // was too late, and is being destroyed
  movie->done = true;

  const std::string error = writer->error();
  if (!error.empty()) {
    log("The movie {} ended with an error: {}", movie->file, error);
    failures_.movieFailed(error);
  }

  if (stopped && error.empty()) {
    mainQueue_.post(lifetime_.guard([this, start] { didStop(start); }));
  } else if (stopped && start == starts_) {
    // Takes back the 5 of a frame that came after the stop: nothing would end it any more.
    _recordingStatus = kRecordingStopping;
  }
  // A writer must not end on its own thread.
  if (_recordingQueue) _recordingQueue->post([this] { dropFinishedWriters(); });
  finished_.notify_all();
}

void Recording::didStop(uint64_t start) {
  {
    const std::lock_guard lock(recordingMutex_);
    if (start != starts_) return;  // the status is that of a later recording
    _recordingStatus = kRecordingFinished;
  }
  tellDelegate(kRecordingFinished);
}

void Recording::dropFinishedWriters() {
  std::vector<Finishing> done;
  const std::lock_guard lock(recordingMutex_);
  const auto firstDone = std::partition(finishing_.begin(), finishing_.end(),
                                        [](const Finishing& each) { return !each.done; });
  std::move(firstDone, finishing_.end(), std::back_inserter(done));
  finishing_.erase(firstDone, finishing_.end());
}

}  // namespace tessary
