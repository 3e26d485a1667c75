#include "ReadMovie.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>

#include "ffmpeg/AvHandles.h"

namespace tessary::test {
namespace {

struct Input {
  AVFormatContext* format = nullptr;
  ~Input() { avformat_close_input(&format); }
};

/// Full range YCbCr to colours, BT.601, written out by hand: what the writer used is not asked.
std::array<int, 3> middleOf(const AVFrame& frame) {
  const int x = frame.width / 2;
  const int y = frame.height / 2;
  const double luma = frame.data[0][y * frame.linesize[0] + x];
  const double cb = frame.data[1][y / 2 * frame.linesize[1] + x / 2] - 128.0;
  const double cr = frame.data[2][y / 2 * frame.linesize[2] + x / 2] - 128.0;
  const auto level = [](double value) { return int(std::lround(std::clamp(value, 0.0, 255.0))); };
  return {level(luma + 1.772 * cb), level(luma - 0.344136 * cb - 0.714136 * cr),
          level(luma + 1.402 * cr)};
}

uint64_t bigEndian(const std::vector<char>& bytes, size_t at, size_t count) {
  uint64_t value = 0;
  for (size_t i = 0; i < count; ++i) value = value << 8 | uint8_t(bytes[at + i]);
  return value;
}

bool readRow(const std::vector<char>& bytes, size_t at, size_t end, const std::string& path,
             bool cutShort, std::vector<std::string>& boxes) {
  static const std::set<std::string> s_containers{"moov", "trak", "mdia", "minf",
                                                  "stbl", "moof", "traf", "mvex"};
  while (at < end) {
    if (end - at < 8) return cutShort;
    uint64_t size = bigEndian(bytes, at, 4);
    const std::string type(&bytes[at + 4], 4);
    size_t header = 8;
    if (size == 1) {
      if (end - at < 16) return cutShort;
      size = bigEndian(bytes, at + 8, 8);
      header = 16;
    }
    if (size < header) return false;
    if (size > end - at) return cutShort;
    boxes.push_back(path + type);
    if (s_containers.contains(type) &&
        !readRow(bytes, at + header, at + size, path + type + "/", false, boxes))
      return false;
    at += size;
  }
  return true;
}

}  // namespace

std::optional<ReadMovie> readMovie(const std::filesystem::path& path) {
  routeAvLog();
  Input input;
  if (avformat_open_input(&input.format, path.c_str(), nullptr, nullptr) < 0) return {};
  if (avformat_find_stream_info(input.format, nullptr) < 0) return {};
  if (input.format->nb_streams < 1) return {};
  ReadMovie movie;
  movie.tracks = int(input.format->nb_streams);
  if (const auto* brand = av_dict_get(input.format->metadata, "major_brand", nullptr, 0))
    movie.majorBrand = brand->value;
  const AVStream& stream = *input.format->streams[0];
  movie.codec = avcodec_get_name(stream.codecpar->codec_id);
  movie.width = stream.codecpar->width;
  movie.height = stream.codecpar->height;
  movie.fullRange = stream.codecpar->color_range == AVCOL_RANGE_JPEG;
  movie.bt601 = stream.codecpar->color_space == AVCOL_SPC_SMPTE170M;
  movie.reorderDelay = stream.codecpar->video_delay;
  movie.duration = input.format->duration;
  if (movie.duration > 0)
    movie.bitRate = double(std::filesystem::file_size(path)) * 8e6 / double(movie.duration);

  const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
  auto context = takeAv(avcodec_alloc_context3(codec));
  avcodec_parameters_to_context(context.get(), stream.codecpar);
  context->err_recognition = AV_EF_EXPLODE;
  context->thread_count = 1;
  if (avcodec_open2(context.get(), codec, nullptr) < 0) return {};

  auto packet = takeAv(av_packet_alloc());
  auto frame = takeAv(av_frame_alloc());
  for (bool more = true; more;) {
    const int read = av_read_frame(input.format, packet.get());
    if (read < 0 && read != AVERROR_EOF) return {};
    more = read >= 0;
    if (more && (packet->flags & AV_PKT_FLAG_CORRUPT) != 0) return {};
    if (avcodec_send_packet(context.get(), more ? packet.get() : nullptr) < 0) return {};
    av_packet_unref(packet.get());
    for (;;) {
      const int got = avcodec_receive_frame(context.get(), frame.get());
      if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) break;
      if (got < 0) return {};
      movie.times.push_back(av_rescale_q(frame->pts, stream.time_base, {1, 1000000}));
      movie.keys.push_back(frame->key_frame != 0);
      movie.colors.push_back(middleOf(*frame));
    }
  }
  return movie;
}

std::vector<std::string> readBoxes(const std::filesystem::path& path, bool cutShort) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
  std::vector<std::string> boxes;
  if (!readRow(bytes, 0, bytes.size(), "", cutShort, boxes)) boxes.clear();
  return boxes;
}

}  // namespace tessary::test
