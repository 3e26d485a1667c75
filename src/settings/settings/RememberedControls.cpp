#include "settings/RememberedControls.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "base/Number.h"
#include "settings/Pieces.h"

namespace tessary {
namespace {

// "camera=9963776:12,9963777:-3;another=..." The one that was adjusted last comes last.
constexpr const char* kKey = "cameraControls";
constexpr char kBetweenCameras = ';';
constexpr char kBehindCamera = '=';
constexpr char kBetweenValues = ',';
constexpr char kBehindControl = ':';
constexpr char kEscape = '%';
constexpr size_t kMostCameras = 50;

/// `camera` without the signs that have a meaning in the stored text.
std::string escaped(std::string_view camera) {
  std::string text;
  for (const char c : camera) {
    const bool isPlain = uint8_t(c) > ' ' && c != kBetweenCameras && c != kBehindCamera &&
                         c != kEscape && c != '"' && c != '\\';
    text += isPlain || c == ' ' ? std::string(1, c) : fmt::format("%{:02x}", uint8_t(c));
  }
  return text;
}

using Entry = std::pair<std::string, std::string>;  // a camera and its values, both as stored

std::vector<Entry> entriesOf(std::string_view text) {
  std::vector<Entry> entries;
  Pieces pieces(text, kBetweenCameras);
  while (const auto piece = pieces.next()) {
    if (const auto halves = exactPieces<2>(*piece, kBehindCamera))
      entries.emplace_back((*halves)[0], (*halves)[1]);
  }
  return entries;
}

ControlValues valuesOf(std::string_view text) {
  ControlValues values;
  Pieces pieces(text, kBetweenValues);
  while (const auto piece = pieces.next()) {
    const auto halves = exactPieces<2>(*piece, kBehindControl);
    if (!halves) continue;
    const auto id = wholeInt((*halves)[0]);
    const auto value = wholeInt((*halves)[1]);
    if (id && *id > 0 && value) values[uint32_t(*id)] = *value;
  }
  return values;
}

std::string textOf(const ControlValues& values) {
  std::string text;
  for (const auto& [id, value] : values) {
    if (!text.empty()) text += kBetweenValues;
    text += fmt::format("{}{}{}", id, kBehindControl, value);
  }
  return text;
}

}  // namespace

ControlValues RememberedControls::values(std::string_view camera) const {
  const std::string name = escaped(camera);
  ControlValues found;
  for (const auto& [stored, values] : entriesOf(defaults_.stringForKey(kKey).value_or(""))) {
    if (stored == name) found = valuesOf(values);
  }
  return found;
}

void RememberedControls::setValues(std::string_view camera, const ControlValues& values) {
  defaults_.synchronize();
  const std::string name = escaped(camera);
  std::vector<Entry> entries = entriesOf(defaults_.stringForKey(kKey).value_or(""));
  std::erase_if(entries, [&name](const Entry& entry) { return entry.first == name; });
  if (!values.empty()) entries.emplace_back(name, textOf(values));
  std::string text;
  for (size_t i = entries.size() - std::min(entries.size(), kMostCameras); i < entries.size();
       ++i) {
    if (!text.empty()) text += kBetweenCameras;
    text += entries[i].first + kBehindCamera + entries[i].second;
  }
  defaults_.setObject(kKey, std::move(text));
}

}  // namespace tessary
