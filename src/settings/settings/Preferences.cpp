#include "settings/Preferences.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "base/Log.h"
#include "base/Number.h"
#include "settings/Pieces.h"

namespace tessary {
namespace {

constexpr int32_t kDefaultTextSize = 26;
constexpr const char* kDefaultColor = "0.0,0.9,0.9";
constexpr std::string_view kNil = "(null)";  // how the log shows what is not there

/// The low 32 bits, as in every narrowing of a stored number.
int32_t narrowed(int64_t value) { return int32_t(value); }

}  // namespace

std::unique_ptr<Preferences> gPreferences;

void Preferences::registerDefaults(UserDefaults& defaults) {
  const UserDefaults::Entry values[] = {
      {"gridColor", kDefaultColor},
      {"lineColor", kDefaultColor},
      {"textColor", kDefaultColor},
      {"textSize", kDefaultTextSize},
      {"imagePNG", 0},
      {"maxRecord", 60},
      {"uniqueID", ""},
      {"videoType", 0},
      {"width", 640},
      {"height", 480},
      {"calibration", 0},
      {"calibrations", ""},
  };
  for (const auto& [key, value] : values) defaults.registerDefaults(key, value);
}

Preferences::Preferences(UserDefaults& defaults, const FolderGrants& grants)
    : defaults_(defaults), grants_(grants) {
  loadURL();

  gridColor = ColorFromString(defaults_.stringForKey("gridColor").value_or(""));
  lineColor = ColorFromString(defaults_.stringForKey("lineColor").value_or(""));
  textColor = ColorFromString(defaults_.stringForKey("textColor").value_or(""));

  textSize = narrowed(defaults_.integerForKey("textSize"));
  imagePNG = narrowed(defaults_.integerForKey("imagePNG"));
  maxRecord = narrowed(defaults_.integerForKey("maxRecord"));
  uniqueID = defaults_.stringForKey("uniqueID").value_or("");

  resolution->type = uint32_t(defaults_.integerForKey("videoType"));
  resolution->width = narrowed(defaults_.integerForKey("width"));
  resolution->height = narrowed(defaults_.integerForKey("height"));

  calibration = narrowed(defaults_.integerForKey("calibration"));
  CalibrationsFromString(defaults_.stringForKey("calibrations"));

  lastEntries_ = entries(textOfCalibrations(calibrations));
  lastCalibrations_ = calibrations;
  for (const auto& [key, value] : lastEntries_) ownTexts_[key] = defaults_.storedText(key);

  // Not written back: the repair lasts until the next save.
  if (textSize < kSmallestTextSize || textSize > kLargestTextSize) textSize = kDefaultTextSize;
  font = Font{textSize};
}

void Preferences::loadURL() {
  const std::optional<UserDefaults::Bytes> data = defaults_.dataForKey("imagePath");
  if (!data) return;
  const std::optional<FolderGrants::ResolvedFolder> folder = grants_.resolveBookmarkData(*data);
  // A stale grant is not renewed, although its folder is in hand: the user is asked again.
  if (folder && !folder->dataIsStale) url = folder->url;
  log("filePath: {}", url ? std::string_view(*url) : kNil);
}

Preferences::Entries Preferences::entries(std::string calibrationsText) const {
  return {
      {"gridColor", ColoToString(gridColor)},
      {"lineColor", ColoToString(lineColor)},
      {"textColor", ColoToString(textColor)},
      {"textSize", textSize},
      {"imagePNG", imagePNG},
      {"maxRecord", maxRecord},
      {"uniqueID", uniqueID},
      {"videoType", int64_t(resolution->type)},
      {"width", resolution->width},
      {"height", resolution->height},
      {"calibration", calibration},
      {"calibrations", std::move(calibrationsText)},
  };
}

void Preferences::save() {
  defaults_.synchronize();
  Entries now = entries(CalibrationsToString());
  const Entries stored = merged(now);
  defaults_.setObjects(stored);
  for (const auto& [key, value] : stored) {
    // Of a merged text the slots of others stay theirs.
    const auto own = std::ranges::find(now, key, &UserDefaults::Entry::first);
    ownTexts_[key] = KeyValueStore::textOf(own->second);
  }
  lastEntries_ = std::move(now);
  lastCalibrations_ = calibrations;
  font = Font{textSize};  // as it stands: the range is repaired on loading only
}

Preferences::Entries Preferences::merged(const Entries& now) const {
  const auto isChanged = [&](const std::string& key) {
    const auto at = std::ranges::find(now, key, &UserDefaults::Entry::first) - now.begin();
    return now[size_t(at)].second != lastEntries_[size_t(at)].second;
  };
  // A microscope and its resolution are one choice.
  constexpr const char* kChoice[] = {"uniqueID", "videoType", "width", "height"};
  const bool choiceIsChanged = std::ranges::any_of(kChoice, isChanged);
  Entries result;
  for (const auto& [key, value] : now) {
    const std::optional<std::string> stored = defaults_.storedText(key);
    const bool isOthers = stored && stored != ownTexts_.at(key);
    if (isOthers && key == "calibrations") {
      result.emplace_back(key, mergedCalibrations(*stored));
      continue;
    }
    const bool isChoice = std::ranges::find(kChoice, key) != std::end(kChoice);
    if (!isOthers || (isChoice ? choiceIsChanged : isChanged(key))) result.emplace_back(key, value);
  }
  return result;
}

std::string Preferences::mergedCalibrations(std::string_view text) const {
  CalibrationSlots slots = calibrationsOfText(text);
  for (size_t i = 0; i < slots.size(); ++i)
    if (calibrations[i] != lastCalibrations_[i]) slots[i] = calibrations[i];
  return textOfCalibrations(slots);
}

void Preferences::saveURL() {
  if (!url) return;
  if (std::optional<FolderGrants::Bytes> data = grants_.bookmarkData(*url))
    defaults_.setObject("imagePath", std::move(*data));
  else
    log("filePath failed to save: {}", *url);
}

Color Preferences::ColorFromString(std::string_view string) const {
  const auto pieces = exactPieces<3>(string, ',');
  if (!pieces) return {0.0, 0.0, 1.0, 1.0};
  const auto& [red, green, blue] = *pieces;
  return {floatValue(red), floatValue(green), floatValue(blue), 1.0};
}

std::string Preferences::ColoToString(const Color& color) const {
  return fmt::format("{:f},{:f},{:f}", color.red, color.green, color.blue);
}

void Preferences::CalibrationsFromString(std::optional<std::string_view> string) {
  log("CalibrationsFromString: {}", string.value_or(kNil));
  calibrations = calibrationsOfText(string.value_or(""));
}

std::string Preferences::CalibrationsToString() const {
  std::string text = textOfCalibrations(calibrations);
  log("CalibrationsToString: {}", text);
  return text;
}

std::optional<int32_t> Preferences::slotInForce(float pixelsPerUnit, std::string_view unit) const {
  if (!(pixelsPerUnit > 0) || calibration < 0 || calibration >= int32_t(kCalibrationSlots))
    return std::nullopt;
  const CalibrationRecord& slot = calibrations[size_t(calibration)];
  // What is in force was narrowed like this.
  if (float(slot.ppu) != pixelsPerUnit || unitText(slot.unit) != unit) return std::nullopt;
  return calibration;
}

}  // namespace tessary
