// Settings as no program wrote them: random bytes, good files with damage, absurd values. The
// preferences are filled from each: nothing crashes, every value is in its range, memory stays
// where it is, and what the program then writes comes back as it is. One in fifty is a file that
// the real store reads and replaces; the others lie in memory, since what files cost is not on
// trial here.

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

#include "Trial.h"
#include "base/Log.h"
#include "qt/IniText.h"
#include "qt/QtKeyValueStore.h"
#include "settings/PathGrants.h"
#include "settings/Preferences.h"
#include "settings/RememberedControls.h"
#include "settings/UserDefaults.h"

namespace tessary {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int64_t kMemoryAllowed = 1'000'000'000;  // what was freed is kept for a while
#else
constexpr int64_t kMemoryAllowed = 32'000'000;
#endif

constexpr const char* kKeys[] = {"gridColor", "lineColor",   "textColor",    "textSize",
                                 "imagePNG",  "maxRecord",   "uniqueID",     "videoType",
                                 "width",     "height",      "imagePath",    "General",
                                 "%",         "calibration", "calibrations", "cameraControls"};

/// In memory, where there is such a folder.
std::filesystem::path temporaryFolder() {
  std::error_code none;
  const std::filesystem::path memory = "/dev/shm";
  return std::filesystem::is_directory(memory, none) && access(memory.c_str(), W_OK) == 0
             ? memory
             : std::filesystem::temp_directory_path();
}

int64_t peakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return int64_t(usage.ru_maxrss) * 1024;
}

class Junk {
 public:
  explicit Junk(uint64_t seed) : random_(seed) {}

  std::string file(const std::string& good) {
    switch (below(8)) {
      case 0: return bytes(below(4000));
      case 1: return lines();
      case 2: return std::string(below(20000), "\n\r\0 ="[below(5)]);
      case 3: return keys();
      default: return damaged(below(2) == 0 ? good : keys());
    }
  }
  std::string calibrations() {
    std::string text;
    for (size_t slot = below(13); slot > 0; --slot) {
      for (size_t field = below(10) == 0 ? below(9) : 6; field > 0; --field) {
        text += value();
        if (field > 1) text += ',';
      }
      text += ';';
    }
    return text;
  }

 private:
  size_t below(size_t end) { return size_t(random_() % end); }

  std::string bytes(size_t count) {
    std::string text(count, '\0');
    for (char& c : text) c = char(random_());
    return text;
  }
  std::string value() {
    static const std::vector<std::string> kValues{"",
                                                  "0",
                                                  "-1",
                                                  "26",
                                                  "12,13",
                                                  "nan",
                                                  "inf",
                                                  "-inf",
                                                  "1e999",
                                                  "1e-999",
                                                  "0x7f",
                                                  "2147483648",
                                                  "-9223372036854775809",
                                                  "99999999999999999999999999",
                                                  "0.1,0.2,0.3",
                                                  "1,,",
                                                  "\"",
                                                  "\\x0",
                                                  "\\",
                                                  "@ByteArray(",
                                                  "@Variant(\\0\\0\\0\\x7f",
                                                  "a\\nb",
                                                  "\xff\xfe",
                                                  "恭禧发财",
                                                  "%00",
                                                  "[",
                                                  "]",
                                                  ";",
                                                  "/dev/null",
                                                  "/",
                                                  "1.5",
                                                  "+7",
                                                  " 8",
                                                  "1e308",
                                                  "4.9e-324",
                                                  "-0"};
    switch (below(6)) {
      case 0: return bytes(below(40));
      case 1: return fmt::format("{}", int64_t(random_()));
      case 2:
        return fmt::format("{}", std::ldexp(double(int64_t(random_())), int(below(2000)) - 1000));
      case 3: return std::string(below(3000), char(random_()));
      default: return kValues[below(kValues.size())];
    }
  }
  std::string keys() {
    std::string text = below(4) == 0 ? "" : "[General]\n";
    for (const char* key : kKeys) {
      if (below(4) == 0) continue;
      const bool slots = std::string_view(key) == "calibrations" && below(2) == 0;
      text +=
          fmt::format("{}{}{}\n", key, below(30) == 0 ? "" : "=", slots ? calibrations() : value());
    }
    return text;
  }
  std::string lines() {
    std::string text;
    for (size_t count = below(200); count > 0; --count)
      text += bytes(below(30)) + "=[]\"\\;%\n"[below(9)] + bytes(below(10)) + "\n";
    return text;
  }
  std::string damaged(std::string text) {
    for (size_t wounds = 1 + below(6); wounds > 0; --wounds) {
      const size_t at = below(text.size() + 1);
      switch (below(5)) {
        case 0: text.insert(at, bytes(1 + below(8))); break;
        case 1: text.erase(at, below(30)); break;
        case 2: text.insert(at, text.substr(below(text.size() + 1), below(60))); break;
        case 3: text.resize(at); break;
        default:
          if (at < text.size()) text[at] = char(random_());
      }
    }
    return text;
  }

  std::mt19937_64 random_;
};

/// Settings that lie in a text, read and written as those in a file are.
class TextStore final : public KeyValueStore {
 public:
  explicit TextStore(std::string& text) : text_(text), ini_(text) {}

  std::optional<Value> value(const std::string& key) override { return ini_.value(key); }
  void store(std::span<const Entry> entries) override {
    for (const auto& [key, value] : entries) ini_.setValue(key, textOf(value));
    text_ = ini_.text();
  }
  void setProblemHandler(ProblemHandler) override {}

 private:
  std::string& text_;
  IniText ini_;
};

/// What is wrong with these settings, or nothing.
std::string complaint(const Preferences& preferences) {
  if (preferences.textSize < 12 || preferences.textSize > 48) return "text size";
  if (preferences.font.pixelSize != preferences.textSize) return "font";
  if (!preferences.resolution) return "resolution";
  for (const Color& color : {preferences.gridColor, preferences.lineColor, preferences.textColor}) {
    for (const double part : {color.red, color.green, color.blue})
      if (!std::isfinite(part)) return "colour";
    if (color.alpha != 1.0) return "alpha";
  }
  for (const CalibrationRecord& slot : preferences.calibrations) {
    if (!std::isfinite(slot.length)) return "length";
    const bool filled = slot.pixels > 0 && slot.length > 0.0;
    if (filled ? slot.ppu != slot.pixels / slot.length : slot.ppu != -1.0) return "calibration";
  }
  return {};
}

int run(const Trial& trial) {
  const LogRedirection quiet([](std::string_view) {});
  const std::filesystem::path folder = temporaryFolder() / fmt::format("tessary-junk-{}", getpid());
  std::filesystem::create_directory(folder);
  const std::string path = folder / "settings.ini";
  const PathGrants grants;
  std::string text;
  bool inFile = true;
  const auto load = [&](const std::function<void(Preferences&, RememberedControls&)>& use) {
    std::unique_ptr<KeyValueStore> store;
    if (inFile) {
      store = std::make_unique<QtKeyValueStore>(path);
    } else {
      store = std::make_unique<TextStore>(text);
    }
    UserDefaults defaults(*store);
    Preferences::registerDefaults(defaults);
    Preferences preferences(defaults, grants);
    RememberedControls remembered(defaults);
    use(preferences, remembered);
  };

  const ControlValues values{{9963776, -12}};
  load([&](Preferences& preferences, RememberedControls& remembered) {
    remembered.setValues("A camera", values);
    preferences.calibrations[0] = {"Objective 4x", 0, 426, 1.5, 640 + 480 * 65536, 20260101, 284.0};
    preferences.save();
  });
  std::string good;
  std::getline(std::ifstream(path), good, '\0');

  Junk junk(trial.seed());
  int64_t failures = 0;
  int64_t saved = 0;
  int64_t bytes = 0;
  const auto expect = [&](int64_t number, const std::string& wrong) {
    if (wrong.empty()) return;
    fmt::print("file {}: {}\n", number, wrong);
    ++failures;
  };
  int64_t memory = 0;
  for (int64_t i = 0; i < trial.count() && failures < 10; ++i) {
    if (i == 100) memory = peakMemory();  // once everything has been in use
    text = junk.file(good);
    bytes += int64_t(text.size());
    inFile = i % 50 == 0;
    if (inFile) std::ofstream(path, std::ios::trunc | std::ios::binary) << text;
    std::string first;
    load([&](Preferences& preferences, RememberedControls& remembered) {
      expect(i, complaint(preferences));
      remembered.values("A camera");
      if (i % 10 != 0) return;
      remembered.setValues("A camera", values);
      preferences.CalibrationsFromString(junk.calibrations());
      expect(i, complaint(preferences));
      first = preferences.CalibrationsToString();
      preferences.save();
      ++saved;
    });
    if (i % 10 != 0) continue;
    for (int times = 0; times < 2; ++times)
      load([&](Preferences& preferences, RememberedControls& remembered) {
        expect(i, complaint(preferences));
        if (remembered.values("A camera") != values) expect(i, "a camera's controls were lost");
        if (preferences.CalibrationsToString() != first)
          expect(i, "what was saved came back changed");
        preferences.save();
      });
  }
  const int64_t grown = trial.count() > 100 ? peakMemory() - memory : 0;
  if (grown > kMemoryAllowed) expect(trial.count(), fmt::format("memory grew by {} bytes", grown));
  std::filesystem::remove_all(folder);
  return trial.end(failures, fmt::format("{:.1f} MB of settings, saved again {} times, peak memory "
                                         "{:.1f} MB more",
                                         double(bytes) * 1e-6, saved, double(grown) * 1e-6));
}

}  // namespace
}  // namespace tessary

int main(int argc, char** argv) {
  return tessary::run(tessary::Trial("junk_settings", argc, argv, 2000));
}
