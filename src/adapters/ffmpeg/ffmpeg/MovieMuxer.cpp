#include "ffmpeg/MovieMuxer.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <limits>
#include <utility>

#include <fmt/format.h>

#include "ffmpeg/Boxes.h"
#include "ffmpeg/MovieEncoder.h"

namespace tessary {
namespace {

void check(int result) {
  if (result < 0)
    throw MovieMuxer::Error{
        fmt::format("The movie can't be put together: {}.", avErrorText(result))};
}

AvHandle<AVCodecParameters> copyOf(const AVCodecParameters& parameters) {
  auto copy = takeAv(avcodec_parameters_alloc());
  check(avcodec_parameters_copy(copy.get(), &parameters));
  return copy;
}

}  // namespace

MovieMuxer::MovieMuxer(const AVCodecParameters& parameters, int32_t gap, std::string creationTime)
    : parameters_(copyOf(parameters)), creationTime_(std::move(creationTime)) {
  // The muxer notes positions as it sees them; the gap moves them to where they are.
  const std::vector<uint8_t> filler(size_t(gap), 0);
  avio_write(fragmentsIo_.io(), filler.data(), gap);
  fragmentsIo_.keepFrom(gap);
  fragmentsIo_.io()->seekable = 0;

  AvOptions options;
  options.set("movflags", "frag_custom+empty_moov+skip_trailer");
  options.set("use_editlist", "0");
  fragments_ = open(fragmentsIo_, options);
  head_ = fragmentsIo_.take();
  end_ = gap + int64_t(head_.size());
}

MovieMuxer::~MovieMuxer() = default;

std::vector<uint8_t> MovieMuxer::head() { return std::exchange(head_, {}); }

AvHandle<AVFormatContext> MovieMuxer::open(MemoryIo& io, AvOptions& options) {
  AVFormatContext* allocated = nullptr;
  check(avformat_alloc_output_context2(&allocated, nullptr, "mov", nullptr));
  AvHandle<AVFormatContext> format(allocated);
  format->pb = io.io();
  format->flags |= AVFMT_FLAG_CUSTOM_IO;
  format->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;  // it would move the first frame to 0
  av_dict_set(&format->metadata, "creation_time", creationTime_.c_str(), 0);

  AVStream* stream = avformat_new_stream(format.get(), nullptr);
  if (!stream) throw std::bad_alloc();
  check(avcodec_parameters_copy(stream->codecpar, parameters_.get()));
  stream->time_base = MovieEncoder::kTimeBase;
  stream->sample_aspect_ratio = parameters_->sample_aspect_ratio;
  options.set("video_track_timescale", "1000000");
  options.set("movie_timescale", "1000000");
  check(avformat_write_header(format.get(), options.get()));
  return format;
}

/// An edit list is written only where the track begins behind the movie's beginning.
void MovieMuxer::openContents(int64_t firstTime) {
  contentsIo_.keepFrom(std::numeric_limits<int64_t>::max());
  AvOptions options;
  options.set("use_editlist", firstTime > 0 ? "1" : "0");
  contents_ = open(contentsIo_, options);
}

std::vector<uint8_t> MovieMuxer::fragment(Packets packets, int64_t lastDuration) {
  // Each fragment is to begin at its first frame's own time. By itself the muxer would let it begin
  // where the last one's durations end.
  check(av_opt_set(fragments_->priv_data, "movflags", "+frag_discont", 0));
  packets.back()->duration = lastDuration;
  for (const auto& packet : packets) check(av_write_frame(fragments_.get(), packet.get()));
  check(av_write_frame(fragments_.get(), nullptr));
  std::vector<uint8_t> bytes = fragmentsIo_.take();
  check(fragmentsIo_.io()->error);

  const size_t payload = box::payloadOf(bytes, "mdat");
  if (payload == 0) throw Error{"The movie can't be put together: a fragment without frames."};
  payload_ = end_ + int64_t(payload);
  end_ += int64_t(bytes.size());
  return bytes;
}

void MovieMuxer::place(Packets packets) {
  if (!contents_) openContents(packets.front()->pts);
  placeHeld();
  if (heldAt_ != placedEnd_) throw Error{"The movie can't be put together: frames are misplaced."};
  heldAt_ = payload_;
  placedEnd_ = end_;
  for (const auto& packet : packets) {
    placeHeld();
    held_ = takeAv(av_packet_clone(packet.get()));
  }
}

/// The frames of a fragment lie one behind the other; how large each became is the muxers' matter.
void MovieMuxer::placeHeld() {
  if (!held_) return;
  avio_seek(contentsIo_.io(), heldAt_, SEEK_SET);
  check(av_write_frame(contents_.get(), held_.get()));
  heldAt_ = avio_tell(contentsIo_.io());
  held_.reset();
}

std::vector<uint8_t> MovieMuxer::contents(int64_t lastDuration) {
  if (!held_) throw Error{"A movie without frames has no contents."};
  held_->duration = lastDuration;
  placeHeld();
  contentsIo_.keepFrom(heldAt_);
  check(av_write_trailer(contents_.get()));
  check(contentsIo_.io()->error);
  return contentsIo_.take();
}

}  // namespace tessary
