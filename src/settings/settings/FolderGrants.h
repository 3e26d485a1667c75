#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessary {

/// Turns the folder that the user chose into bytes that can be stored, and such bytes back into a
/// folder that can be used. Main thread.
class FolderGrants {
 public:
  using Bytes = std::vector<uint8_t>;

  struct ResolvedFolder {
    std::string url;           ///< Path of the folder, UTF-8.
    bool dataIsStale = false;  ///< The folder is known but the grant no longer holds.
  };

  virtual ~FolderGrants() = default;
  /// Nothing if `url` can't be granted.
  virtual std::optional<Bytes> bookmarkData(const std::string& url) const = 0;
  /// Nothing if the folder can't be had any more.
  virtual std::optional<ResolvedFolder> resolveBookmarkData(const Bytes& data) const = 0;
};

}  // namespace tessary
