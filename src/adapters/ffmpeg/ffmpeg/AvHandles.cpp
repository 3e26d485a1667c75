#include "ffmpeg/AvHandles.h"

#include <array>
#include <mutex>
#include <string_view>

#include "base/Log.h"

namespace tessary {
namespace {

/// What muxers fail at is told by their results. They also call every movie of more than 35 minutes
/// a fatal error, without giving their name: QuickTime 7 did not know lengths of 64 bits.
bool isMuxer(void* object) {
  if (!object) return true;
  const AVClass* type = *static_cast<AVClass**>(object);
  return type && type->get_category && type->get_category(object) == AV_CLASS_CATEGORY_MUXER;
}

void logAvError(void* object, int level, const char* format, va_list arguments) {
  // What x264 and the containers say below an error is about choices made here on purpose.
  if (level > AV_LOG_ERROR || isMuxer(object)) return;
  std::array<char, 512> text{};
  int atLineStart = 1;
  ffmpeg().av_log_format_line(object, level, format, arguments, text.data(), int(text.size()),
                              &atLineStart);
  std::string_view line(text.data());
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  if (!line.empty()) log("FFmpeg: {}", line);
}

}  // namespace

std::string avErrorText(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  ffmpeg().av_strerror(code, text.data(), text.size());
  return text.data();
}

void routeAvLog() {
  static std::once_flag s_once;
  std::call_once(s_once, [] { ffmpeg().av_log_set_callback(logAvError); });
}

}  // namespace tessary
