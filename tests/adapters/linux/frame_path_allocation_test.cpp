// The steady state of a stream allocates nothing, from the driver's buffer to the ring of frames.
#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>

#include <gtest/gtest.h>

#include "FakeCompositor.h"
#include "FakeFailureListener.h"
#include "FakeRasterizer.h"
#include "FakeVideoDriver.h"
#include "FakeViewHost.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "MemoryKeyValueStore.h"
#include "WaitLimit.h"
#include "capture/CaptureVideoDataOutput.h"
#include "linux/NodeProbe.h"
#include "linux/V4l2DeviceInput.h"
#include "settings/PathGrants.h"
#include "view/PreviewView.h"
#include "yuv/YuvFrameDecoder.h"

namespace {

std::atomic<int64_t> gAllocations{0};
/// Above 0 where the test allocates, and not the program.
thread_local int t_uncounted = 0;

void* countedAllocation(size_t size, size_t alignment = 0) {
  if (t_uncounted == 0) ++gAllocations;
  const size_t bytes = size > 0 ? size : 1;
  void* block = alignment == 0 ? std::malloc(bytes)
                               : std::aligned_alloc(
                                     alignment, (bytes + alignment - 1) / alignment * alignment);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

// Not inlined, so that the compiler does not take one half of a pair for foreign to the other.
[[gnu::noinline]] void* operator new(size_t size) { return countedAllocation(size); }
[[gnu::noinline]] void* operator new[](size_t size) { return countedAllocation(size); }
[[gnu::noinline]] void* operator new(size_t size, std::align_val_t alignment) {
  return countedAllocation(size, size_t(alignment));
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, size_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block, size_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::align_val_t) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, size_t, std::align_val_t) noexcept {
  std::free(block);
}

namespace tessary::test {
namespace {

struct Uncounted {
  Uncounted() { ++t_uncounted; }
  ~Uncounted() { --t_uncounted; }
};

/// The driver, whose own allocations are the kernel's business.
class UncountedDriver final : public V4l2Calls {
 public:
  explicit UncountedDriver(FakeVideoDriver& driver) : driver_(driver) {}

  int open(const char* path, int flags) override {
    const Uncounted here;
    return driver_.open(path, flags);
  }
  int close(int fd) override {
    const Uncounted here;
    return driver_.close(fd);
  }
  int ioctl(int fd, unsigned long request, void* argument) override {
    const Uncounted here;
    return driver_.ioctl(fd, request, argument);
  }
  void* mmap(size_t length, int fd, off_t offset) override {
    const Uncounted here;
    return driver_.mmap(length, fd, offset);
  }
  int munmap(void* address, size_t length) override {
    const Uncounted here;
    return driver_.munmap(address, length);
  }
  int poll(pollfd* descriptors, nfds_t count, int timeoutMilliseconds) override {
    const Uncounted here;
    return driver_.poll(descriptors, count, timeoutMilliseconds);
  }

 private:
  FakeVideoDriver& driver_;
};

class NoEncoder final : public ImageEncoder {
 public:
  std::vector<uint8_t> encode(const PixelBuffer&, const std::string&) override { return {}; }
  size_t xmpRoom() const override { return 0; }
};

/// Hands the frames to the picture, and tells how many were.
class Delegate final : public CaptureVideoDataOutputSampleBufferDelegate {
 public:
  explicit Delegate(PreviewView& view) : view_(view) {}
  void captureOutputDidOutputSampleBuffer(const SampleBuffer& frame) override {
    view_.updateVideoFrame(frame);
    ++handled;
  }
  void captureOutputDidDropSampleBuffer(const SampleBuffer&) override { ++dropped; }

  std::atomic<int> handled{0};
  std::atomic<int> dropped{0};

 private:
  PreviewView& view_;
};

class FramePath : public testing::Test {
 protected:
  static constexpr TextureSize kSize{640, 480};
  static constexpr int64_t kInterval = 33'333;

  FramePath() {
    driver_.formats = {{V4L2_PIX_FMT_YUYV, {{uint32_t(kSize.width), uint32_t(kSize.height)}}}};
    driver_.bufferBytes = uint32_t(kSize.width) * uint32_t(kSize.height) * 2;
    const NodeProbe probe = probeNode(*calls_, "/dev/video7");
    V4l2CaptureDevice::Description description;
    description.localizedName = "Scope";
    description.devNode = "/dev/video7";
    description.formats = probe.formats;
    description.defaultFormat = probe.currentFormat;
    device_ = std::make_shared<V4l2CaptureDevice>(description);
  }

  /// Sends frames until `count` have arrived at the picture.
  void sendUntil(int count) {
    while (delegate_.handled < count) {
      const int next = delegate_.handled + 1;
      frame_.stamp = MediaTime(next * kInterval);
      ASSERT_TRUE(driver_.push(frame_));
      const auto end = std::chrono::steady_clock::now() + kWaitLimit;
      while (delegate_.handled < next) {
        ASSERT_LT(std::chrono::steady_clock::now(), end) << "frame " << next << " never came";
        std::this_thread::yield();
      }
    }
  }

  const Uncounted thisThread_;
  LogCapture log_;
  MemoryKeyValueStore store_;
  UserDefaults defaults_{store_};
  PathGrants grants_;
  Preferences preferences_{defaults_, grants_};
  FakeViewHost host_;
  FakeCompositor compositor_;  // never asked for anything: nothing is drawn
  FakeRasterizer rasterizer_;
  ManualExecutor mainQueue_;
  FakeFailureListener failures_;
  NoEncoder encoder_;
  SystemClock clock_;
  PreviewView view_{{host_,
                     compositor_,
                     rasterizer_,
                     preferences_,
                     mainQueue_,
                     encoder_,
                     encoder_,
                     {},
                     failures_,
                     [] {},
                     [](const std::function<void()>& work) { work(); },
                     clock_,
                     [] { return std::string(); }}};
  Delegate delegate_{view_};
  CaptureVideoDataOutput output_;
  FakeVideoDriver driver_;
  std::shared_ptr<V4l2Calls> calls_ = std::make_shared<UncountedDriver>(driver_);
  std::shared_ptr<V4l2CaptureDevice> device_;
  FakeVideoDriver::Frame frame_{std::vector<uint8_t>(size_t(kSize.width * kSize.height * 2), 128)};
};

TEST_F(FramePath, AFrameAllocatesNothingFromTheDriverToTheRing) {
  output_.setSampleBufferDelegate(&delegate_, std::make_shared<SerialQueue>("frames"));
  StreamTiming timing;
  timing.configurationGrace = std::chrono::milliseconds(0);
  timing.silence = std::chrono::minutes(1);
  auto input = V4l2DeviceInput::open(calls_, device_, YuvFrameDecoder::make, timing);
  ASSERT_TRUE(input) << input.error();
  (*input)->startStreaming(output_);
  ASSERT_TRUE(driver_.waitForStreamOn(1));

  // Pool, ring and queues fill; the rate is measured over the last second, thirty frames. The main
  // thread is told once, as it does not come to look.
  ASSERT_NO_FATAL_FAILURE(sendUntil(60));
  const int64_t before = gAllocations;
  ASSERT_NO_FATAL_FAILURE(sendUntil(360));
  output_.drain();
  const int64_t allocated = gAllocations - before;
  (*input)->stopStreaming();
  EXPECT_EQ(allocated, 0) << "over 300 frames";
  EXPECT_EQ(delegate_.dropped, 0);
  EXPECT_NEAR(view_.videoFrameRate(), 30.0F, 0.1F);
}

TEST_F(FramePath, TheCountingSeesAnAllocationOfAnotherThread) {
  const int64_t before = gAllocations;
  std::jthread([] {
    const auto* volatile number = new int(1);
    delete number;
  }).join();
  EXPECT_GT(gAllocations, before);
}

}  // namespace
}  // namespace tessary::test
