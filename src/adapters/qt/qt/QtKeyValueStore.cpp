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
  auto text = file_->read();
  if (text) {
    ini_ = IniText(*text);
    return;
  }
  log("Settings could not be read from {}: {}", path(), text.error());
  noteProblem(fmt::format("The settings can't be read: {}. See to {}, then start again.",
                          text.error(), path()));
}

std::optional<KeyValueStore::Value> QtKeyValueStore::value(const std::string& key) {
  if (const auto found = unwritten_.find(key); found != unwritten_.end()) return found->second;
  return ini_.value(key);
}

void QtKeyValueStore::refresh() {
  if (auto text = file_->read()) ini_ = IniText(*text);
}

void QtKeyValueStore::store(std::span<const Entry> entries) {
  for (const auto& [key, value] : entries) unwritten_[key] = textOf(value);
  const auto written = write();
  if (written) return noteProblem({});
  log("Settings could not be written to {}; they hold until the program ends.", path());
  noteProblem(fmt::format("The settings can't be kept: {}. They hold until the program ends.",
                          written.error()));
}

Result<void> QtKeyValueStore::write() {
  // Read anew: another run, or a hand, may have set other keys meanwhile. Two runs that store in
  // the same millisecond can still lose one of the two changes; no lock is worth that.
  auto text = file_->read();
  if (!text) return Error{text.error()};
  IniText ini(*text);
  for (const auto& [key, value] : unwritten_) ini.setValue(key, value);
  if (auto replaced = file_->replace(ini.text()); !replaced) return replaced;
  ini_ = std::move(ini);
  unwritten_.clear();
  return {};
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
