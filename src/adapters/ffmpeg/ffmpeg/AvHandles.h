#pragma once
// What libavcodec and libavformat hand out, each wrapped once.

#include <memory>
#include <new>
#include <string>

#include "ffmpeg/Ffmpeg.h"

namespace tessary {

struct FreeAv {
  void operator()(AVCodecContext* context) const noexcept {
    ffmpeg().avcodec_free_context(&context);
  }
  void operator()(AVFormatContext* context) const noexcept {
    ffmpeg().avformat_free_context(context);
  }
  void operator()(AVCodecParameters* parameters) const noexcept {
    ffmpeg().avcodec_parameters_free(&parameters);
  }
  void operator()(AVFrame* frame) const noexcept { ffmpeg().av_frame_free(&frame); }
  void operator()(AVPacket* packet) const noexcept { ffmpeg().av_packet_free(&packet); }
  void operator()(AVIOContext* io) const noexcept {
    if (!io) return;
    ffmpeg().av_freep(&io->buffer);
    ffmpeg().avio_context_free(&io);
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
  ~AvOptions() { ffmpeg().av_dict_free(&options_); }
  AvOptions(const AvOptions&) = delete;
  AvOptions& operator=(const AvOptions&) = delete;

  void set(const char* key, const std::string& value) {
    ffmpeg().av_dict_set(&options_, key, value.c_str(), 0);
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
