#pragma once

#include "settings/FolderGrants.h"

namespace tessary {

/// Grants for a platform where a path is all that it takes: the bytes are the folder's absolute
/// path. A folder can be used if it exists and files can be made in it; a grant is never stale.
class PathGrants final : public FolderGrants {
 public:
  std::optional<Bytes> bookmarkData(const std::string& url) const override;
  std::optional<ResolvedFolder> resolveBookmarkData(const Bytes& data) const override;
};

}  // namespace tessary
