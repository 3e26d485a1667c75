#include "ffmpeg/MovieMuxer.h"

#include <limits>
#include <utility>

#include <fmt/format.h>

#include "ffmpeg/Boxes.h"
#include "ffmpeg/MovieEncoder.h"

namespace tessary {
namespace {

Result<void> check(int result) {
  if (result >= 0) return {};
  return Error{fmt::format("The movie can't be put together: {}.", avErrorText(result))};
}

}  // namespace

MovieMuxer::MovieMuxer(std::string creationTime) : creationTime_(std::move(creationTime)) {}

MovieMuxer::~MovieMuxer() = default;

Result<std::unique_ptr<MovieMuxer>> MovieMuxer::make(const AVCodecParameters& parameters,
                                                     int32_t gap, std::string creationTime) {
  std::unique_ptr<MovieMuxer> muxer(new MovieMuxer(std::move(creationTime)));
  if (auto opened = muxer->openFragments(parameters, gap); !opened) return Error{opened.error()};
  return muxer;
}

Result<void> MovieMuxer::openFragments(const AVCodecParameters& parameters, int32_t gap) {
  if (auto copied = check(ffmpeg().avcodec_parameters_copy(parameters_.get(), &parameters));
      !copied)
    return copied;
  // The muxer notes positions as it sees them; the gap moves them to where they are.
  const std::vector<uint8_t> filler(size_t(gap), 0);
  ffmpeg().avio_write(fragmentsIo_.io(), filler.data(), gap);
  fragmentsIo_.keepFrom(gap);
  fragmentsIo_.io()->seekable = 0;

  AvOptions options;
  options.set("movflags", "frag_custom+empty_moov+skip_trailer");
  options.set("use_editlist", "0");
  auto opened = open(fragmentsIo_, options);
  if (!opened) return Error{opened.error()};
  fragments_ = *std::move(opened);
  head_ = fragmentsIo_.take();
  end_ = gap + int64_t(head_.size());
  return {};
}

std::vector<uint8_t> MovieMuxer::head() { return std::exchange(head_, {}); }

Result<AvHandle<AVFormatContext>> MovieMuxer::open(MemoryIo& io, AvOptions& options) {
  AVFormatContext* allocated = nullptr;
  int result = ffmpeg().avformat_alloc_output_context2(&allocated, nullptr, "mov", nullptr);
  AvHandle<AVFormatContext> format(allocated);
  if (auto made = check(result); !made) return Error{made.error()};
  format->pb = io.io();
  format->flags |= AVFMT_FLAG_CUSTOM_IO;
  format->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;  // it would move the first frame to 0
  ffmpeg().av_dict_set(&format->metadata, "creation_time", creationTime_.c_str(), 0);

  AVStream* stream = ffmpeg().avformat_new_stream(format.get(), nullptr);
  if (!stream) throw std::bad_alloc();
  result = ffmpeg().avcodec_parameters_copy(stream->codecpar, parameters_.get());
  stream->time_base = MovieEncoder::kTimeBase;
  stream->sample_aspect_ratio = parameters_->sample_aspect_ratio;
  options.set("video_track_timescale", "1000000");
  options.set("movie_timescale", "1000000");
  if (result >= 0) result = ffmpeg().avformat_write_header(format.get(), options.get());
  if (auto begun = check(result); !begun) return Error{begun.error()};
  return format;
}

/// An edit list is written only where the track begins behind the movie's beginning.
Result<void> MovieMuxer::openContents(int64_t firstTime) {
  contentsIo_.keepFrom(std::numeric_limits<int64_t>::max());
  AvOptions options;
  options.set("use_editlist", firstTime > 0 ? "1" : "0");
  auto opened = open(contentsIo_, options);
  if (!opened) return Error{opened.error()};
  contents_ = *std::move(opened);
  return {};
}

Result<std::vector<uint8_t>> MovieMuxer::fragment(Packets packets, int64_t lastDuration) {
  // Each fragment is to begin at its first frame's own time. By itself the muxer would let it begin
  // where the last one's durations end.
  int result = ffmpeg().av_opt_set(fragments_->priv_data, "movflags", "+frag_discont", 0);
  packets.back()->duration = lastDuration;
  for (size_t i = 0; result >= 0 && i < packets.size(); ++i)
    result = ffmpeg().av_write_frame(fragments_.get(), packets[i].get());
  if (result >= 0) result = ffmpeg().av_write_frame(fragments_.get(), nullptr);
  std::vector<uint8_t> bytes = fragmentsIo_.take();
  if (result >= 0) result = fragmentsIo_.io()->error;
  if (auto written = check(result); !written) return Error{written.error()};

  const size_t payload = box::payloadOf(bytes, "mdat");
  if (payload == 0) return Error{"The movie can't be put together: a fragment without frames."};
  payload_ = end_ + int64_t(payload);
  end_ += int64_t(bytes.size());
  return bytes;
}

Result<void> MovieMuxer::place(Packets packets) {
  if (!contents_) {
    if (auto opened = openContents(packets.front()->pts); !opened) return opened;
  }
  if (auto placed = placeHeld(); !placed) return placed;
  if (heldAt_ != placedEnd_) return Error{"The movie can't be put together: frames are misplaced."};
  heldAt_ = payload_;
  placedEnd_ = end_;
  for (const auto& packet : packets) {
    if (auto placed = placeHeld(); !placed) return placed;
    held_ = takeAv(ffmpeg().av_packet_clone(packet.get()));
  }
  return {};
}

/// The frames of a fragment lie one behind the other; how large each became is the muxers' matter.
Result<void> MovieMuxer::placeHeld() {
  if (!held_) return {};
  ffmpeg().avio_seek(contentsIo_.io(), heldAt_, SEEK_SET);
  auto written = check(ffmpeg().av_write_frame(contents_.get(), held_.get()));
  heldAt_ = ffmpeg().avio_seek(contentsIo_.io(), 0, SEEK_CUR);
  held_.reset();
  return written;
}

Result<std::vector<uint8_t>> MovieMuxer::contents(int64_t lastDuration) {
  if (!held_) return Error{"A movie without frames has no contents."};
  held_->duration = lastDuration;
  if (auto placed = placeHeld(); !placed) return Error{placed.error()};
  contentsIo_.keepFrom(heldAt_);
  int result = ffmpeg().av_write_trailer(contents_.get());
  if (result >= 0) result = contentsIo_.io()->error;
  if (auto written = check(result); !written) return Error{written.error()};
  return contentsIo_.take();
}

}  // namespace tessary
