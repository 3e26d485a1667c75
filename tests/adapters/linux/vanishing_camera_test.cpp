// A camera may be pulled out, or stumble, in any call whatsoever. Here each call of a whole session
// fails in turn, in every way.
#include <cerrno>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "StreamRig.h"
#include "base/FourCharCode.h"

namespace tessary {
namespace {

using namespace std::chrono_literals;
using test::StreamRig;
using testing::AnyOf;
using testing::IsEmpty;

struct Ending {
  bool opened = false;
  size_t frames = 0;
  std::vector<std::string> failures;
};

// Opens the camera, configures it, takes some frames, changes the format, takes some more, closes.
// Each wait ends when the stream has given up, too.
Ending session(StreamRig& rig) {
  rig.timing.configurationGrace = 1h;
  rig.driver->runFreely(std::vector<uint8_t>(256, 'a'));
  Ending ending;
  if (rig.open()) {
    ending.opened = true;
    const auto settled = [&](size_t frames) {
      return rig.driver->waitUntil([&, frames] {
        return rig.sink.frames().size() >= frames || !rig.sink.failures().empty() ||
               rig.linesWith("stream ended") > 0 ||
               (rig.driver->mappings() == 0 && rig.driver->unplugged());
      });
    };
    rig.input->startStreaming(rig.sink);
    rig.configure(kMediaSubTypeYUYV, 8, 4, {1, 30});
    EXPECT_TRUE(settled(3));
    const size_t before = rig.sink.frames().size();
    rig.configure(kMediaSubTypeMJPEG, 64, 48, {1, 30});
    EXPECT_TRUE(settled(before + 3));
    rig.input->stopStreaming();
  }
  rig.input.reset();
  ending.frames = rig.sink.frames().size();
  ending.failures = rig.sink.failures();
  return ending;
}

int callsOfASession() {
  StreamRig rig;
  rig.discover();
  rig.driver->failCall(0, 0, false);  // counts from here
  const Ending ending = session(rig);
  EXPECT_GE(ending.frames, 6u);
  return rig.driver->calls();
}

class FailingCall : public testing::TestWithParam<int> {};

TEST_P(FailingCall, AtAnyMomentOnceLeavesNothingBehind) {
  const int calls = callsOfASession();
  ASSERT_GT(calls, 40);
  for (int n = 1; n <= calls; ++n) {
    StreamRig rig;
    rig.discover();
    rig.driver->failCall(n, GetParam(), false);
    const Ending ending = session(rig);
    EXPECT_TRUE(rig.leakFree()) << "call " << n;
    EXPECT_THAT(rig.driver->violations(), IsEmpty()) << "call " << n;
    if (!ending.opened) {
      EXPECT_FALSE(rig.error.empty()) << "call " << n;
      EXPECT_LE(n, 3) << "the session begins with opening, claiming and closing";
      continue;
    }
    switch (GetParam()) {
      case EIO:
      case EINTR: EXPECT_GE(ending.frames, 6u) << "call " << n; [[fallthrough]];
      case ENODEV: EXPECT_THAT(ending.failures, IsEmpty()) << "call " << n; break;
      default:
        EXPECT_LE(ending.failures.size(), 1u) << "call " << n;
        EXPECT_GE(ending.frames + ending.failures.size() * 6, 6u) << "call " << n;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Errors, FailingCall, testing::Values(EIO, EINTR, ENODEV, EBUSY, ENOSPC),
                         [](const auto& test) {
                           switch (test.param) {
                             case EIO: return "EIO";
                             case EINTR: return "EINTR";
                             case ENODEV: return "ENODEV";
                             case EBUSY: return "EBUSY";
                             default: return "ENOSPC";
                           }
                         });

TEST(VanishingCamera, AtAnyMomentForGoodEndsQuietly) {
  const int calls = callsOfASession();
  for (int n = 1; n <= calls; ++n) {
    StreamRig rig;
    rig.discover();
    rig.driver->failCall(n, ENODEV, true);
    const Ending ending = session(rig);
    EXPECT_TRUE(rig.leakFree()) << "call " << n;
    EXPECT_THAT(ending.failures, IsEmpty()) << "call " << n;
    EXPECT_EQ(ending.opened, rig.error.empty()) << "call " << n;
    EXPECT_THAT(rig.error, AnyOf("", "The camera is not connected any more. Plug it in again."));
  }
}

}  // namespace
}  // namespace tessary
