#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Color.h"
#include "base/Resolution.h"
#include "platform/TextRasterizer.h"
#include "settings/CalibrationText.h"
#include "settings/FolderGrants.h"
#include "settings/UserDefaults.h"

namespace tessary {

/// What a text size may be, in points.
inline constexpr int32_t kSmallestTextSize = 12;
inline constexpr int32_t kLargestTextSize = 48;

/// Everything the program remembers between runs. Its fields are read and written directly, without
/// any checks; whoever changes one calls `save` to keep the change. Main thread.
class Preferences {
 public:
  /// Registers the values that settings have until they are first saved. The folder has none: only
  /// its absence tells that none was ever chosen.
  static void registerDefaults(UserDefaults& defaults);

  /// Fills every field from `defaults`, in which the defaults have been registered. Whatever is
  /// stored there, a value comes out; of numbers only `textSize` is repaired. Writes nothing. Both
  /// arguments have to outlive this object.
  Preferences(UserDefaults& defaults, const FolderGrants& grants);
  Preferences(const Preferences&) = delete;
  Preferences& operator=(const Preferences&) = delete;

  /// Stores every field except `url`, and makes `font` follow `textSize`. What another run has
  /// stored meanwhile stays, except for what was changed here since the last load or `save`; of the
  /// calibrations each slot counts by itself. The fields keep their values either way.
  void save();
  /// Stores `url`. Does nothing without one; a folder that can't be granted is logged, stays in
  /// force for this run, and leaves the stored one as it was.
  void saveURL();

  /// Three numbers between commas, not clamped; a piece that is no number reads as 0. Any other
  /// count of pieces gives pure blue, which is meant: a damaged colour can be seen.
  Color ColorFromString(std::string_view string) const;
  /// Six decimals each. Alpha is dropped.
  std::string ColoToString(const Color& color) const;

  /// Fills all ten slots; no text empties them.
  void CalibrationsFromString(std::optional<std::string_view> string);
  std::string CalibrationsToString() const;

  /// The slot that the calibration in force, of so many texture pixels per `unit` (its text), came
  /// from: the one last completed or applied, unless it holds another one by now. Nothing for no
  /// calibration.
  std::optional<int32_t> slotInForce(float pixelsPerUnit, std::string_view unit) const;

  /// Path (UTF-8) of the folder for saved images and videos.
  std::optional<std::string> url;
  Color gridColor;
  Color lineColor;
  Color textColor;
  int32_t textSize = 0;   ///< In points, between the limits above.
  int32_t imagePNG = 0;   ///< Photo format: 0 for JPG, any other value for PNG.
  int32_t maxRecord = 0;  ///< Recording limit in seconds.
  std::string uniqueID;   ///< Of the last microscope used, "" for none.
  /// The last resolution used. Always this one object, whose values are overwritten.
  const std::shared_ptr<Resolution> resolution = std::make_shared<Resolution>();
  /// Slot last completed or applied. Not checked; readers have to.
  int32_t calibration = 0;
  CalibrationSlots calibrations;
  Font font;  ///< Of `textSize` at the last load or `save`.

 private:
  using Entries = std::vector<UserDefaults::Entry>;

  void loadURL();
  Entries entries(std::string calibrationsText) const;
  /// The entries to store beside what another run has stored.
  Entries merged(const Entries& now) const;
  /// Those of `text`, with the slots that were changed here.
  std::string mergedCalibrations(std::string_view text) const;

  UserDefaults& defaults_;
  const FolderGrants& grants_;
  // As of the last load or `save`, which tells what was changed here.
  Entries lastEntries_;
  CalibrationSlots lastCalibrations_;
  /// What this run has read or stored under each key; something else is another run's.
  std::map<std::string, std::optional<std::string>> ownTexts_;
};

/// The settings, from launch to the end of the process.
extern std::unique_ptr<Preferences> gPreferences;

}  // namespace tessary
