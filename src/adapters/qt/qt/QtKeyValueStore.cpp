#include "qt/QtKeyValueStore.h"

#include <QStandardPaths>
#include <utility>

#include <fmt/format.h>

#include "base/Log.h"

namespace tessary {
namespace {

std::string userPath(const std::string& organisation, const std::string& application) {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return fmt::format("{}/{}/{}.ini", folder.toStdString(), organisation, application);
}

}  // namespace

QtKeyValueStore::QtKeyValueStore(const std::string& path)
    : QtKeyValueStore(std::make_unique<SettingsFile>(path)) {}

QtKeyValueStore::QtKeyValueStore(const std::string& organisation, const std::string& application)
    : QtKeyValueStore(userPath(organisation, application)) {}

QtKeyValueStore::QtKeyValueStore(std::unique_ptr<SettingsFile> file) : file_(std::move(file)) {
  if (std::optional<IniText> ini = read()) {
    ini_ = std::move(*ini);
    return;
  }
  log("Settings could not be read from {}: {}", path(), file_->error());
  noteProblem(fmt::format("The settings can't be read: {}. See to {}, then start again.",
                          file_->error(), path()));
}

std::optional<IniText> QtKeyValueStore::read() {
  const std::optional<std::string> text = file_->read();
  if (!text) return std::nullopt;
  return IniText(*text);
}

std::optional<KeyValueStore::Value> QtKeyValueStore::value(const std::string& key) {
  if (const auto found = unwritten_.find(key); found != unwritten_.end()) return found->second;
  return ini_.value(key);
}

void QtKeyValueStore::refresh() {
  if (std::optional<IniText> ini = read()) ini_ = std::move(*ini);
}

void QtKeyValueStore::store(std::span<const Entry> entries) {
  for (const auto& [key, value] : entries) unwritten_[key] = textOf(value);
  // Read anew: another run, or a hand, may have set other keys meanwhile. Two runs that store in
  // the same millisecond can still lose one of the two changes; no lock is worth that.
  std::optional<IniText> ini = read();
  if (ini) {
    for (const auto& [key, text] : unwritten_) ini->setValue(key, text);
    if (file_->replace(ini->text())) {
      ini_ = std::move(*ini);
      unwritten_.clear();
      noteProblem({});
      return;
    }
  }
  log("Settings could not be written to {}; they hold until the program ends.", path());
  noteProblem(fmt::format("The settings can't be kept: {}. They hold until the program ends.",
                          file_->error()));
}

void QtKeyValueStore::setProblemHandler(ProblemHandler handler) {
  problemHandler_ = std::move(handler);
  if (problemHandler_ && !problem_.empty()) problemHandler_(problem_);
}

void QtKeyValueStore::noteProblem(std::string problem) {
  if (problem.empty() && problem_.empty()) return;
  problem_ = std::move(problem);
  if (problemHandler_) problemHandler_(problem_);
}

}  // namespace tessary
