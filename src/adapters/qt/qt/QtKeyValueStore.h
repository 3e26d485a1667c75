#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/KeyValueStore.h"
#include "qt/IniText.h"
#include "qt/SettingsFile.h"

namespace tessary {

/// A key-value store in an ini file of the user's, which may be edited by hand: every value lies in
/// it as readable text and comes back as a string. Main thread.
///
/// Not QSettings: that one waits up to half a minute for a lock that a crash left behind, cuts the
/// file off on a full disk and calls it a success, takes texts with commas for lists, and builds
/// whatever serialised objects it finds in the file.
class QtKeyValueStore final : public KeyValueStore {
 public:
  /// `path` in UTF-8.
  explicit QtKeyValueStore(const std::string& path);
  explicit QtKeyValueStore(std::unique_ptr<SettingsFile> file);
  /// The file at the usual place below the user's configuration folder.
  QtKeyValueStore(const std::string& organisation, const std::string& application);

  std::optional<Value> value(const std::string& key) override;
  void refresh() override;
  /// Replaces the file in one step, and leaves the keys of others in it alone. What could not be
  /// written is tried again with the next call.
  void store(std::span<const Entry> entries) override;
  void setProblemHandler(ProblemHandler handler) override;

  const std::string& path() const { return file_->path(); }

 private:
  /// What the file holds now, if it can be read.
  /// What is unwritten, into the file.
  Result<void> write();
  void noteProblem(std::string problem);

  const std::unique_ptr<SettingsFile> file_;
  IniText ini_;
  std::map<std::string, std::string> unwritten_;  // stored by this run and not in the file
  std::string problem_;                           // empty for none
  ProblemHandler problemHandler_;
};

}  // namespace tessary
