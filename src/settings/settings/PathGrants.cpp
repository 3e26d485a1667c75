#include "settings/PathGrants.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "base/SerialQueue.h"

namespace tessary {
namespace {

bool takesFiles(const std::string& url) {
  std::error_code error;
  return std::filesystem::is_directory(url, error) && ::access(url.c_str(), W_OK | X_OK) == 0;
}

}  // namespace

PathGrants::PathGrants() : PathGrants(takesFiles, kDiskAnswerLimit) {}

PathGrants::PathGrants(Check check, std::chrono::milliseconds answerLimit)
    : check_(std::move(check)), answerLimit_(answerLimit) {}

bool PathGrants::isUsable(const std::string& url) const {
  unanswered_.reset();
  // A path with a NUL in it would name another folder to the system.
  if (!url.starts_with('/') || url.find('\0') != std::string::npos) return false;
  const auto usable = callWithin(answerLimit_, [check = check_, url] { return check(url); });
  if (!usable) unanswered_ = url;
  return usable.value_or(false);
}

std::optional<PathGrants::Bytes> PathGrants::bookmarkData(const std::string& url) const {
  if (!isUsable(url)) return std::nullopt;
  return Bytes(url.begin(), url.end());
}

std::optional<PathGrants::ResolvedFolder> PathGrants::resolveBookmarkData(const Bytes& data) const {
  std::string url(data.begin(), data.end());
  if (!isUsable(url)) return std::nullopt;
  return ResolvedFolder{std::move(url)};
}

}  // namespace tessary
