#include "ffmpeg/MovieEncoder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include <fmt/format.h>
#include <libyuv.h>
#include <malloc.h>

#include "base/Log.h"

namespace tessary {
namespace {

using SteadyClock = std::chrono::steady_clock;

// Below this, x264 would take the rate for none at all; only pictures of a few pixels ask for less.
constexpr int64_t kLeastBitRate = 8000;
// A pause longer than this tells nothing about the camera's rate, nor does a shorter interval than
// any camera has.
constexpr int64_t kLongestInterval = 1'000'000;
constexpr double kShortestMeanInterval = 2'000;
constexpr int32_t kIntervalsInMean = 30;

constexpr int32_t kLargestSide = 16384;

const AVCodec* findEncoder() {
  routeAvLog();
  return ffmpeg().avcodec_find_encoder_by_name("libx264");
}

}  // namespace

Result<void> MovieEncoder::accepts(const MovieSettings& settings) {
  const auto [width, height, bitRate, frameRate, keyFrameInterval] = settings;
  if (width <= 0 || height <= 0) return Error{"There is no picture to record."};
  if (width % 2 != 0 || height % 2 != 0)
    return Error{fmt::format("A movie's width and height must be even numbers, not {} by {}.",
                             width, height)};
  if (width > kLargestSide || height > kLargestSide)
    return Error{fmt::format("A picture of {} by {} is too large for a movie.", width, height)};
  if (bitRate <= 0) return Error{fmt::format("{} bits a second are too few for a movie.", bitRate)};
  if (frameRate <= 0) return Error{fmt::format("{} is not a frame rate.", frameRate)};
  if (keyFrameInterval <= 0)
    return Error{fmt::format("{} is not a key frame interval.", keyFrameInterval)};
  if (!findEncoder()) return Error{"The H.264 encoder (libx264) is missing on this machine."};
  return {};
}

Result<std::unique_ptr<MovieEncoder>> MovieEncoder::make(const MovieSettings& settings,
                                                         const EffortLadder& ladder) {
  if (auto accepted = accepts(settings); !accepted) return Error{accepted.error()};
  std::unique_ptr<MovieEncoder> encoder(new MovieEncoder(settings, ladder));
  auto opened = encoder->open();
  if (!opened) return Error{opened.error()};
  encoder->context_ = *std::move(opened);
  const AVCodecContext& context = *encoder->context_;
  ffmpeg().avcodec_parameters_from_context(encoder->parameters_.get(), &context);

  AVFrame& frame = *encoder->frame_;
  frame.format = context.pix_fmt;
  frame.width = context.width;
  frame.height = context.height;
  frame.color_range = context.color_range;
  frame.colorspace = context.colorspace;
  frame.color_primaries = context.color_primaries;
  frame.color_trc = context.color_trc;
  frame.sample_aspect_ratio = context.sample_aspect_ratio;
  if (ffmpeg().av_frame_get_buffer(&frame, 0) < 0) throw std::bad_alloc();
  return encoder;
}

MovieEncoder::MovieEncoder(const MovieSettings& settings, const EffortLadder& ladder)
    : settings_(settings),
      ladder_(ladder),
      parameters_(takeAv(ffmpeg().avcodec_parameters_alloc())),
      frame_(takeAv(ffmpeg().av_frame_alloc())),
      meanInterval_(1e6 / settings.expectedSourceFrameRate) {}

MovieEncoder::~MovieEncoder() {
  context_.reset();
  // An encoder is many pieces of all sizes, and the heap would keep their room, tens of megabytes.
  malloc_trim(0);
}

Result<AvHandle<AVCodecContext>> MovieEncoder::open() const {
  const AVCodec* codec = findEncoder();
  auto context = takeAv(ffmpeg().avcodec_alloc_context3(codec));
  context->width = settings_.width;
  context->height = settings_.height;
  context->sample_aspect_ratio = {1, 1};
  context->pix_fmt = AV_PIX_FMT_YUV420P;
  context->color_range = AVCOL_RANGE_JPEG;
  context->colorspace = AVCOL_SPC_SMPTE170M;
  context->color_primaries = AVCOL_PRI_BT709;
  context->color_trc = AVCOL_TRC_BT709;
  context->chroma_sample_location = AVCHROMA_LOC_CENTER;  // as libyuv averages
  context->time_base = kTimeBase;
  context->framerate = {settings_.expectedSourceFrameRate, 1};
  context->gop_size = settings_.maxKeyFrameInterval;
  context->keyint_min = settings_.maxKeyFrameInterval;
  context->max_b_frames = 0;
  // Peak and average alike, and a buffer of half a second that starts half empty: the rate is near
  // its average over any few seconds, not only over a long movie. A camera's grain makes use of it.
  context->bit_rate = std::max<int64_t>(settings_.averageBitRate, kLeastBitRate);
  context->rc_max_rate = context->bit_rate;
  context->rc_buffer_size = int(context->bit_rate / 2);
  context->rc_initial_buffer_occupancy = context->rc_buffer_size / 2;
  context->thread_count = ladder_.threads();
  context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;

  AvOptions options;
  options.set("preset", ladder_.effort().preset);
  options.set("tune", "zerolatency");
  options.set("x264-params", ladder_.streamFeatures());
  const int result = ffmpeg().avcodec_open2(context.get(), codec, options.get());
  if (result < 0)
    return Error{fmt::format("The H.264 encoder can't be opened: {}.", avErrorText(result))};
  return context;
}

Result<void> MovieEncoder::encode(const PixelBuffer& picture, int64_t time, Packets& packets) {
  const auto begin = SteadyClock::now();
  if (ffmpeg().av_frame_make_writable(frame_.get()) < 0) throw std::bad_alloc();
  libyuv::ARGBToJ420(picture.data(), int(picture.bytesPerRow()), frame_->data[0],
                     frame_->linesize[0], frame_->data[1], frame_->linesize[1], frame_->data[2],
                     frame_->linesize[2], frame_->width, frame_->height);
  const auto converted = SteadyClock::now();
  auto sent = repeat(time, packets);
  busy_ += std::chrono::duration_cast<std::chrono::microseconds>(converted - begin);
  return sent;
}

Result<void> MovieEncoder::repeat(int64_t time, Packets& packets) {
  if (framesSinceKeyFrame_ == settings_.maxKeyFrameInterval) framesSinceKeyFrame_ = 0;
  if (framesSinceKeyFrame_ == 0) {
    if (auto prepared = prepareKeyFrame(time, packets); !prepared) return prepared;
  }
  ++framesSinceKeyFrame_;

  const auto begin = SteadyClock::now();
  followFrameRate(time);
  frame_->pts = time;
  auto sent = send(frame_.get(), packets);
  busy_ += std::chrono::duration_cast<std::chrono::microseconds>(SteadyClock::now() - begin);
  return sent;
}

/// x264 gives every frame its share of a second at the expected rate: its other way, to go by the
/// time stamps, holds each frame back until the next has come. So a second of its clock is given as
/// many bits as that many frames really have.
void MovieEncoder::followFrameRate(int64_t time) {
  if (lastTime_ && time - *lastTime_ <= kLongestInterval) {
    intervals_ = std::min(intervals_ + 1, kIntervalsInMean);
    meanInterval_ += (double(time - *lastTime_) - meanInterval_) / intervals_;
  }
  lastTime_ = time;
  const double framesTakeSeconds =
      std::max(meanInterval_, kShortestMeanInterval) * 1e-6 * settings_.expectedSourceFrameRate;
  const double wanted = settings_.averageBitRate * framesTakeSeconds;
  if (std::abs(wanted - double(context_->bit_rate)) < 0.01 * wanted) return;
  context_->bit_rate = std::max(int64_t(wanted), kLeastBitRate);
  context_->rc_max_rate = context_->bit_rate;
}

/// The frame at `time` is going to be a key frame: the one place where the effort may change.
Result<void> MovieEncoder::prepareKeyFrame(int64_t time, Packets& packets) {
  const auto previous = std::exchange(keyFrameTime_, time);
  const auto busy = std::exchange(busy_, std::chrono::microseconds(0));
  if (!previous || !EffortLadder::isTooSlow(busy, std::chrono::microseconds(time - *previous)))
    return {};
  // Of two key frames that follow each other each has another number, and a new encoder starts to
  // count again: a movie of nothing but key frames stays as it is.
  if (!ladder_.canStepDown() || settings_.maxKeyFrameInterval == 1) return {};

  if (auto drained = drain(packets); !drained) return drained;
  ladder_.stepDown();
  auto opened = open();
  if (!opened) return Error{opened.error()};
  auto context = *std::move(opened);
  // They are the same by the ladder's making; a stream that changed under its header would not
  // play.
  if (context->extradata_size != parameters_->extradata_size ||
      std::memcmp(context->extradata, parameters_->extradata, size_t(context->extradata_size)) != 0)
    return Error{"The H.264 encoder changed its stream header."};
  context_ = std::move(context);
  log("Movie: the encoder can't keep up, going on with less effort (\"{}\")",
      ladder_.effort().preset);
  return {};
}

Result<void> MovieEncoder::drain(Packets& packets) { return send(nullptr, packets); }

Result<void> MovieEncoder::send(const AVFrame* frame, Packets& packets) {
  int result = ffmpeg().avcodec_send_frame(context_.get(), frame);
  while (result >= 0) {
    auto packet = takeAv(ffmpeg().av_packet_alloc());
    result = ffmpeg().avcodec_receive_packet(context_.get(), packet.get());
    if (result >= 0) packets.push_back(std::move(packet));
  }
  if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return {};
  return Error{fmt::format("The H.264 encoder failed: {}.", avErrorText(result))};
}

}  // namespace tessary
