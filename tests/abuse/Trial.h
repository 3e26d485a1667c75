#pragma once
// What the trials in C++ share: their options and their one line of result.
//
//   int main(int argc, char** argv) {
//     const tessary::Trial trial("junk_settings", argc, argv, 1000);
//     ...
//     return trial.end(failures, fmt::format("{} files, {} of them put aside", ...));
//   }

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "base/Number.h"

namespace tessary {

/// `--seed N` (default: from the clock) and `--count N`.
class Trial {
 public:
  /// Prints the seed at once, so that it is known however the trial ends. Ends the process with 2
  /// on an option that it doesn't know.
  Trial(std::string_view name, int argc, char** argv, int64_t defaultCount)
      : name_(name),
        begin_(std::chrono::steady_clock::now()),
        seed_(uint64_t(std::chrono::system_clock::now().time_since_epoch().count() / 1000) %
              1'000'000),
        count_(defaultCount) {
    for (int i = 1; i < argc; i += 2) {
      const std::string_view option = argv[i];
      if (i + 1 < argc && option == "--seed") {
        seed_ = uint64_t(int64Value(argv[i + 1]));
      } else if (i + 1 < argc && option == "--count") {
        count_ = int64Value(argv[i + 1]);
      } else {
        fmt::print(stderr, "{} [--seed N] [--count N]\n", name_);
        std::exit(2);
      }
    }
    fmt::print("{}: seed {}, count {}\n", name_, seed_, count_);
    std::fflush(stdout);
  }

  uint64_t seed() const { return seed_; }
  int64_t count() const { return count_; }

  /// Prints the line of result with these figures; the exit status for main.
  int end(int64_t failures, std::string_view figures) const {
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin_;
    fmt::print("{}: {}, {} failures; {} (seed {}, {:.0f} s)\n", name_,
               failures == 0 ? "passed" : "FAILED", failures, figures, seed_, took.count());
    return failures == 0 ? 0 : 1;
  }

 private:
  std::string name_;
  std::chrono::steady_clock::time_point begin_;
  uint64_t seed_;
  int64_t count_;
};

}  // namespace tessary
