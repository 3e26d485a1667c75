#include "ffmpeg/FfmpegAssetWriter.h"

#include <exception>
#include <filesystem>
#include <utility>

#include <fmt/format.h>

#include "ffmpeg/Ffmpeg.h"
#include "ffmpeg/MovieEncoder.h"
#include "ffmpeg/MovieFile.h"
#include "ffmpeg/MovieRecorder.h"

namespace tessary {

FfmpegAssetWriter::FfmpegAssetWriter(std::string path)
    : FfmpegAssetWriter(std::move(path), FileCalls::system()) {}

FfmpegAssetWriter::FfmpegAssetWriter(std::string path, FileCalls& calls,
                                     std::chrono::milliseconds endLimit)
    : path_(std::move(path)), calls_(calls), endLimit_(endLimit) {}

FfmpegAssetWriter::~FfmpegAssetWriter() {
  if (!queue_) return;
  if (!finishing_) endsBy_ = std::chrono::steady_clock::now() + endLimit_;
  if (recorder_) recorder_->stop({});
  // The completion handler may destroy the writer that it runs for; its thread then has nothing of
  // the writer's left to use.
  if (queue_->isThisThread()) return;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      endsBy_ - std::chrono::steady_clock::now());
  const bool ended = queue_->call(left, [] { return true; }).has_value();
  // A completion that is being called goes by itself; it must not outlive the writer.
  if (!ended && (!recorder_ || !recorder_->forgetCompletion())) queue_->drain();
}

bool FfmpegAssetWriter::canApplyOutputSettings(const MovieSettings& settings) const {
  return bool(MovieEncoder::accepts(settings));
}

Result<void> FfmpegAssetWriter::startWriting(const MovieSettings& settings) {
  if (recorder_ || finishing_) return Error{"The writer has been started before."};
  auto opened = open(settings);
  const std::lock_guard lock(mutex_);
  failure_ = opened.error();
  return opened;
}

Result<void> FfmpegAssetWriter::open(const MovieSettings& settings) try {
  const EffortLadder ladder(settings.width, settings.height, settings.expectedSourceFrameRate,
                            std::thread::hardware_concurrency());
  auto encoder = MovieEncoder::make(settings, ladder);
  if (!encoder) return Error{encoder.error()};
  auto made = MovieRecorder::make(*std::move(encoder), std::make_unique<MovieFile>(path_, calls_));
  if (!made) return Error{made.error()};
  std::shared_ptr<MovieRecorder> recorder = *std::move(made);
  startThread([recorder]() mutable {
    const auto completed = recorder->run();
    recorder.reset();
    if (completed) completed();
  });
  settings_ = settings;
  const std::lock_guard lock(mutex_);
  recorder_ = std::move(recorder);
  return {};
} catch (const std::exception& error) {
  return Error{fmt::format("The movie can't be made: {}.", error.what())};
}

void FfmpegAssetWriter::startThread(std::function<void()> work) {
  queue_ = std::make_unique<SerialQueue>("movie writer", std::chrono::milliseconds(0));
  queue_->post(std::move(work));
}

void FfmpegAssetWriter::startSessionAtSourceTime(MediaTime time) {
  if (!sessionStart_) sessionStart_ = time;
}

bool FfmpegAssetWriter::isReadyForMoreMediaData() const {
  return recorder_ && sessionStart_ && !finishing_ && recorder_->hasRoom();
}

Result<void> FfmpegAssetWriter::appendSampleBuffer(const SampleBuffer& frame) {
  if (auto ended = error(); !ended.empty()) return Error{std::move(ended)};
  if (auto accepted = accepts(frame); !accepted) return accepted;
  const MediaTime time = frame.presentationTimeStamp;
  if (!recorder_->push(frame.imageBuffer, (time - *sessionStart_).count())) {
    auto ended = error();
    return Error{ended.empty() ? "The encoder has not kept up." : std::move(ended)};
  }
  lastTime_ = time;
  return {};
}

Result<void> FfmpegAssetWriter::accepts(const SampleBuffer& frame) const {
  const MediaTime time = frame.presentationTimeStamp;
  if (!recorder_) return Error{"Writing has not begun."};
  if (finishing_) return Error{"The movie is being finished."};
  if (!sessionStart_) return Error{"The movie's timeline has not begun."};
  if (!frame.imageBuffer) return Error{"A frame without a picture."};
  const auto [width, height] = frame.imageBuffer->size();
  if (width != settings_.width || height != settings_.height)
    return Error{fmt::format("A frame of {} by {} does not fit into a movie of {} by {}.", width,
                             height, settings_.width, settings_.height)};
  if (time < *sessionStart_) return Error{"A frame from before the movie's timeline."};
  if (lastTime_ && time <= *lastTime_)
    return Error{fmt::format(
        "A frame's time stamp ({} microseconds) does not follow the one before it ({}).",
        time.count(), lastTime_->count())};
  return {};
}

void FfmpegAssetWriter::finishWritingWithCompletionHandler(std::function<void()> completed) {
  if (finishing_) return;
  finishing_ = true;
  endsBy_ = std::chrono::steady_clock::now() + endLimit_;
  if (recorder_)
    recorder_->stop(std::move(completed));
  else if (completed)
    startThread(std::move(completed));
}

std::string FfmpegAssetWriter::error() const {
  const std::lock_guard lock(mutex_);
  return recorder_ ? recorder_->error() : failure_;
}

int64_t FfmpegAssetWriter::framesWritten() const {
  const std::lock_guard lock(mutex_);
  return recorder_ ? recorder_->framesWritten() : 0;
}

AssetWriterFactory makeFfmpegAssetWriterFactory() {
  return [](const std::string& path) -> Result<std::unique_ptr<AssetWriter>> {
    if (!std::filesystem::path(path).is_absolute())
      return Error{fmt::format("\"{}\" is not the whole path of a movie.", path)};
    try {
      ffmpeg();
    } catch (const std::exception& error) {
      return Error{fmt::format("Movies can't be made here: {}.", error.what())};
    }
    return std::make_unique<FfmpegAssetWriter>(path);
  };
}

}  // namespace tessary
