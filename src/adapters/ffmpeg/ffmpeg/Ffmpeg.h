#pragma once
// FFmpeg's libraries, found when the first movie is made. They and the hundred that they stand on
// take longer to load than the program's window takes to show, and most days begin without a movie.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
}

namespace tessary {

/// What is used of libavutil.
#define TESSARY_AVUTIL_FUNCTIONS(USE) \
  USE(av_dict_free)                   \
  USE(av_dict_set)                    \
  USE(av_frame_alloc)                 \
  USE(av_frame_free)                  \
  USE(av_frame_get_buffer)            \
  USE(av_frame_make_writable)         \
  USE(av_free)                        \
  USE(av_freep)                       \
  USE(av_log_format_line)             \
  USE(av_log_set_callback)            \
  USE(av_malloc)                      \
  USE(av_opt_set)                     \
  USE(av_strerror)

/// What is used of libavcodec.
#define TESSARY_AVCODEC_FUNCTIONS(USE) \
  USE(av_packet_alloc)                 \
  USE(av_packet_clone)                 \
  USE(av_packet_free)                  \
  USE(avcodec_alloc_context3)          \
  USE(avcodec_find_encoder_by_name)    \
  USE(avcodec_free_context)            \
  USE(avcodec_open2)                   \
  USE(avcodec_parameters_alloc)        \
  USE(avcodec_parameters_copy)         \
  USE(avcodec_parameters_free)         \
  USE(avcodec_parameters_from_context) \
  USE(avcodec_receive_packet)          \
  USE(avcodec_send_frame)

/// What is used of libavformat.
#define TESSARY_AVFORMAT_FUNCTIONS(USE) \
  USE(av_write_frame)                   \
  USE(av_write_trailer)                 \
  USE(avformat_alloc_output_context2)   \
  USE(avformat_free_context)            \
  USE(avformat_new_stream)              \
  USE(avformat_write_header)            \
  USE(avio_alloc_context)               \
  USE(avio_context_free)                \
  USE(avio_flush)                       \
  USE(avio_seek)                        \
  USE(avio_write)

/// The functions, under their own names.
struct Ffmpeg {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member's name stands without them.
#define TESSARY_MEMBER(name) decltype(&::name) name;
  TESSARY_AVUTIL_FUNCTIONS(TESSARY_MEMBER)
  TESSARY_AVCODEC_FUNCTIONS(TESSARY_MEMBER)
  TESSARY_AVFORMAT_FUNCTIONS(TESSARY_MEMBER)
#undef TESSARY_MEMBER
};

/// Loads the libraries at the first call, of the very versions that this program was built with,
/// which takes about a tenth of a second. Throws std::runtime_error, in plain words, where one is
/// missing. Any thread.
const Ffmpeg& ffmpeg();

}  // namespace tessary
