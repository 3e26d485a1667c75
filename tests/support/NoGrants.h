#pragma once

#include <optional>
#include <string>

#include "settings/FolderGrants.h"

namespace tessary::test {

/// No folder can be granted, for who asks for none.
class NoGrants final : public FolderGrants {
 public:
  std::optional<Bytes> bookmarkData(const std::string&) const override { return {}; }
  std::optional<ResolvedFolder> resolveBookmarkData(const Bytes&) const override { return {}; }
};

}  // namespace tessary::test
