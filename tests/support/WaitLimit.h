#pragma once

#include <chrono>
#include <future>
#include <string_view>

#include <gtest/gtest.h>

namespace tessary::test {

/// How long a test waits for what another thread has to do. Only a failure takes that long.
constexpr std::chrono::seconds kWaitLimit{20};

inline testing::AssertionResult neverCame(std::string_view what) {
  return testing::AssertionFailure()
         << what << " did not come within " << kWaitLimit.count() << " seconds";
}

/// Whether `event` comes true in time; `what` names it in the failure.
template <typename Value>
testing::AssertionResult comes(std::future<Value> event, std::string_view what) {
  if (event.wait_for(kWaitLimit) == std::future_status::ready) return testing::AssertionSuccess();
  return neverCame(what);
}

}  // namespace tessary::test
