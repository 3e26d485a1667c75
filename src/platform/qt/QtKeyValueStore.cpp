#include "platform/qt/QtKeyValueStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <fmt/format.h>

#include "base/Log.h"

namespace tessary {
namespace {

std::string userPath(const std::string& organisation, const std::string& application) {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return fmt::format("{}/{}/{}.ini", folder.toStdString(), organisation, application);
}

/// No file is an empty one; nothing if there is one that can't be read.
std::optional<IniText> read(const std::string& path) {
  QFile file(QString::fromStdString(path));
  if (!file.exists()) return IniText();
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  const QByteArray text = file.readAll();
  if (file.error() != QFileDevice::NoError) return std::nullopt;
  return IniText({text.data(), size_t(text.size())});
}

bool write(const std::string& path, const std::string& text) {
  const QString name = QString::fromStdString(path);
  QDir().mkpath(QFileInfo(name).path());
  QSaveFile file(name);
  // Unbuffered, because what a full disk cuts off inside the buffer goes unnoticed by commit().
  if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) return false;
  if (file.write(text.data(), qint64(text.size())) != qint64(text.size())) return false;
  return file.commit();
}

std::string textOf(const KeyValueStore::Value& value) {
  if (const auto* number = std::get_if<int64_t>(&value)) return fmt::format("{}", *number);
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  const auto& bytes = std::get<KeyValueStore::Bytes>(value);
  return {bytes.begin(), bytes.end()};
}

}  // namespace

QtKeyValueStore::QtKeyValueStore(const std::string& path)
    : path_(path), ini_(read(path).value_or(IniText())) {}

QtKeyValueStore::QtKeyValueStore(const std::string& organisation, const std::string& application)
    : QtKeyValueStore(userPath(organisation, application)) {}

std::optional<KeyValueStore::Value> QtKeyValueStore::value(const std::string& key) {
  if (const auto found = unwritten_.find(key); found != unwritten_.end()) return found->second;
  return ini_.value(key);
}

void QtKeyValueStore::store(std::span<const Entry> entries) {
  for (const auto& [key, value] : entries) unwritten_[key] = textOf(value);
  // Read anew: another run, or a hand, may have set other keys meanwhile. Two runs that store in
  // the same millisecond can still lose one of the two changes; no lock is worth that.
  std::optional<IniText> ini = read(path_);
  if (ini) {
    for (const auto& [key, text] : unwritten_) ini->setValue(key, text);
    if (write(path_, ini->text())) {
      ini_ = std::move(*ini);
      unwritten_.clear();
      return;
    }
  }
  log("Settings could not be written to {}; they hold until the program ends.", path_);
}

}  // namespace tessary
