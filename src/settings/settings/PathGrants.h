#pragma once

#include <functional>

#include "base/FileCalls.h"
#include "settings/FolderGrants.h"

namespace tessary {

/// Grants for a platform where a path is all that it takes: the bytes are the folder's absolute
/// path. A folder can be used if it exists and files can be made in it, and if its disk says so in
/// time; a grant is never stale.
class PathGrants final : public FolderGrants {
 public:
  /// Whether the folder at an absolute path can be used. May take for ever, on any thread.
  using Check = std::function<bool(const std::string& url)>;

  PathGrants();
  /// For tests.
  PathGrants(Check check, std::chrono::milliseconds answerLimit);

  std::optional<Bytes> bookmarkData(const std::string& url) const override;
  std::optional<ResolvedFolder> resolveBookmarkData(const Bytes& data) const override;

  /// The folder that was asked for last, if its disk did not answer.
  const std::optional<std::string>& unanswered() const { return unanswered_; }

 private:
  bool isUsable(const std::string& url) const;

  const Check check_;
  const std::chrono::milliseconds answerLimit_;
  mutable std::optional<std::string> unanswered_;
};

}  // namespace tessary
