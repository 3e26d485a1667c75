#include "ffmpeg/Ffmpeg.h"

#include <stdexcept>

#include <dlfcn.h>
#include <fmt/format.h>

namespace tessary {
namespace {

/// Stays loaded: what the functions hand out has no end that could be known.
class Library {
 public:
  Library(const char* name, int version)
      : name_(fmt::format("lib{}.so.{}", name, version)),
        handle_(::dlopen(name_.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(fmt::format("{} can't be loaded", name_));
  }

  template <typename Function>
  void find(Function& function, const char* functionName) const {
    function = reinterpret_cast<Function>(::dlsym(handle_, functionName));
    if (!function) throw std::runtime_error(fmt::format("{} lacks {}", name_, functionName));
  }

 private:
  std::string name_;
  void* handle_;
};

Ffmpeg load() {
  Ffmpeg functions{};
  const Library avutil("avutil", LIBAVUTIL_VERSION_MAJOR);
  const Library avcodec("avcodec", LIBAVCODEC_VERSION_MAJOR);
  const Library avformat("avformat", LIBAVFORMAT_VERSION_MAJOR);
#define TESSARY_FIND_IN(library, name) library.find(functions.name, #name);
#define TESSARY_FIND_AVUTIL(name) TESSARY_FIND_IN(avutil, name)
#define TESSARY_FIND_AVCODEC(name) TESSARY_FIND_IN(avcodec, name)
#define TESSARY_FIND_AVFORMAT(name) TESSARY_FIND_IN(avformat, name)
  TESSARY_AVUTIL_FUNCTIONS(TESSARY_FIND_AVUTIL)
  TESSARY_AVCODEC_FUNCTIONS(TESSARY_FIND_AVCODEC)
  TESSARY_AVFORMAT_FUNCTIONS(TESSARY_FIND_AVFORMAT)
  return functions;
}

}  // namespace

const Ffmpeg& ffmpeg() {
  static const Ffmpeg s_functions = load();
  return s_functions;
}

}  // namespace tessary
