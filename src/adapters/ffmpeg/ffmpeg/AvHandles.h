#pragma once
// What libavcodec and libavformat hand out, each wrapped once.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>
#include <new>
#include <string>

namespace tessary {

struct FreeAv {
  void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
  void operator()(AVFormatContext* context) const noexcept { avformat_free_context(context); }
  void operator()(AVCodecParameters* parameters) const noexcept {
    avcodec_parameters_free(&parameters);
  }
  void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
  void operator()(AVIOContext* io) const noexcept {
    if (!io) return;
    av_freep(&io->buffer);
    avio_context_free(&io);
  }
};

template <typename T>
using AvHandle = std::unique_ptr<T, FreeAv>;

/// What an allocating call of FFmpeg returned; it returns null only for want of memory.
template <typename T>
AvHandle<T> takeAv(T* allocated) {
  if (!allocated) throw std::bad_alloc();
  return AvHandle<T>(allocated);
}

/// A table of options for one call.
class AvOptions {
 public:
  AvOptions() = default;
  ~AvOptions() { av_dict_free(&options_); }
  AvOptions(const AvOptions&) = delete;
  AvOptions& operator=(const AvOptions&) = delete;

  void set(const char* key, const std::string& value) {
    av_dict_set(&options_, key, value.c_str(), 0);
  }
  AVDictionary** get() noexcept { return &options_; }

 private:
  AVDictionary* options_ = nullptr;
};

/// What an error code of FFmpeg means.
std::string avErrorText(int code);

/// Sends FFmpeg's own errors to the program's log and keeps it quiet otherwise. Any thread; once is
/// enough.
void routeAvLog();

}  // namespace tessary
