#include "settings/PathGrants.h"

#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace tessary {
namespace {

bool isUsable(const std::string& url) {
  // A path with a NUL in it would name another folder to the system.
  if (!url.starts_with('/') || url.find('\0') != std::string::npos) return false;
  std::error_code error;
  return std::filesystem::is_directory(url, error) && ::access(url.c_str(), W_OK | X_OK) == 0;
}

}  // namespace

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
