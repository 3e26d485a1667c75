#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "platform/AssetWriter.h"

namespace tessary::test {

/// What happened, in order. Any thread.
class Journal {
 public:
  void add(std::string what) {
    const std::lock_guard lock(mutex_);
    entries_.push_back(std::move(what));
  }
  /// What was added since the last call.
  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(entries_, {});
  }

 private:
  std::mutex mutex_;  // guards entries_
  std::vector<std::string> entries_;
};

/// What the writers of a test do, and the completions that they owe.
struct WriterScript {
  std::string makeError;  // the factory fails with this
  bool canApply = true;
  bool starts = true;
  std::atomic<bool> ready{true};
  std::string refusal;                             // of every frame
  std::string error;                               // of the movie
  std::vector<std::function<void()>> completions;  // in the order of finishing
};

/// Writes nothing but into the journal, with its number: the first writer of a test is 1.
class FakeAssetWriter final : public AssetWriter {
 public:
  FakeAssetWriter(int number, WriterScript& script, Journal& journal)
      : number_(number), script_(script), journal_(journal) {}
  ~FakeAssetWriter() override { add("destroyed"); }

  bool canApplyOutputSettings(const MovieSettings& settings) const override {
    add(fmt::format("settings {}x{} {} {} {}", settings.width, settings.height,
                    settings.averageBitRate, settings.expectedSourceFrameRate,
                    settings.maxKeyFrameInterval));
    return script_.canApply;
  }
  Result<void> startWriting(const MovieSettings& /*settings*/) override {
    add("start");
    if (!script_.starts) return Error{script_.error};
    return {};
  }
  void startSessionAtSourceTime(MediaTime time) override {
    add(fmt::format("session {}", time.count()));
  }
  bool isReadyForMoreMediaData() const override { return script_.ready; }
  Result<void> appendSampleBuffer(const SampleBuffer& frame) override {
    add(fmt::format("frame {}", frame.presentationTimeStamp.count()));
    if (!script_.refusal.empty()) return Error{script_.refusal};
    if (!script_.error.empty()) return Error{script_.error};
    return {};
  }
  void finishWritingWithCompletionHandler(std::function<void()> completed) override {
    add("finish");
    script_.completions.push_back(std::move(completed));
  }
  std::string error() const override { return script_.error; }

 private:
  void add(const std::string& what) const { journal_.add(fmt::format("{}: {}", number_, what)); }

  const int number_;
  WriterScript& script_;
  Journal& journal_;
};

/// Makes numbered fakes; `script` and `journal` must outlive them.
inline AssetWriterFactory fakeWriters(WriterScript& script, Journal& journal) {
  return [&script, &journal,
          made = 0](const std::string& path) mutable -> Result<std::unique_ptr<AssetWriter>> {
    journal.add("make " + path);
    if (!script.makeError.empty()) return Error{script.makeError};
    return std::make_unique<FakeAssetWriter>(++made, script, journal);
  };
}

}  // namespace tessary::test
