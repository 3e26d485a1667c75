#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <linux/videodev2.h>

#include "base/FileDescriptor.h"
#include "base/Time.h"
#include "linux/V4l2Calls.h"

namespace tessary::test {

/// A camera's driver without a camera: keeps the rules of V4L2's streaming as uvcvideo does, plays
/// the frames and faults that a test asks for, and notes what is done to it. Any thread.
class FakeVideoDriver final : public V4l2Calls {
 public:
  struct Size {
    uint32_t width, height;
    std::vector<v4l2_fract> intervals{{1, 30}};
  };
  struct Format {
    uint32_t pixelFormat;
    std::vector<Size> sizes;
    /// In place of sizes.
    std::optional<v4l2_frmsize_stepwise> range{};
    /// In place of the sizes' intervals.
    std::optional<v4l2_frmival_stepwise> intervalRange{};
  };
  struct Frame {
    std::vector<uint8_t> bytes;
    MediaTime stamp{1};
    uint32_t flags = 0;
    /// What the driver says it filled, if that is not what it did.
    std::optional<uint32_t> bytesused{};
    /// Frames lost before this one.
    uint32_t lost = 0;
  };

  FakeVideoDriver();

  // The camera, to be set before it is used.
  std::string card = "Fake Microscope";
  uint32_t capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
  std::vector<Format> formats;
  uint32_t bufferBytes = 4096;
  uint32_t paddingPerRow = 0;
  unsigned bufferCount = 4;
  std::optional<Size> answeredSize;
  bool knowsFrameRates = true;

  // Things that happen.
  /// A frame arrives. False if it is lost, as there is no stream or no free buffer.
  bool push(Frame frame);
  /// From now on a frame is there whenever somebody waits for one.
  void runFreely(std::vector<uint8_t> bytes);
  void beSilent();
  void unplug();
  void setOpenError(int error);
  void setOtherProgramStreams(bool streams);
  /// The next `times` calls of this ioctl fail.
  void failIoctl(unsigned long request, int error, int times = 1);
  /// The `number`th call from now, whichever it is, fails; with `forEver` all that follow do.
  void failCall(int number, int error, bool forEver);

  // What was done.
  int calls() const;
  bool unplugged() const;
  int openDescriptors() const;
  int mappings() const;
  int ioctls(unsigned long request) const;
  bool streaming() const;
  /// Whether the last wait for something other than a frame had no end.
  bool waitsWithoutLimit() const;
  std::optional<v4l2_pix_format> formatSet() const;
  std::optional<v4l2_fract> intervalSet() const;
  /// Breaches of V4L2's rules.
  std::vector<std::string> violations() const;
  /// Waits until `condition` holds; False after a generous time.
  bool waitUntil(const std::function<bool()>& condition) const;
  bool waitForStreamOn(int times) const;

  // V4l2Calls
  int open(const char* path, int flags) override;
  int close(int fd) override;
  int ioctl(int fd, unsigned long request, void* argument) override;
  void* mmap(size_t length, int fd, off_t offset) override;
  int munmap(void* address, size_t length) override;
  int poll(pollfd* descriptors, nfds_t count, int timeoutMilliseconds) override;

 private:
  enum class BufferState { Dequeued, Queued, Filled };
  struct Buffer {
    std::unique_ptr<uint8_t[]> memory;
    BufferState state = BufferState::Dequeued;
    v4l2_buffer filled{};
  };

  // All with the lock held.
  int dueFailure();
  int perform(unsigned long request, void* argument);
  int enumerateFormat(v4l2_fmtdesc& entry) const;
  int enumerateSize(v4l2_frmsizeenum& entry) const;
  int enumerateInterval(v4l2_frmivalenum& entry) const;
  int setFormat(v4l2_format& format);
  int requestBuffers(v4l2_requestbuffers& request);
  int queueBuffer(const v4l2_buffer& buffer);
  int dequeueBuffer(v4l2_buffer& buffer);
  bool fill(const Frame& frame);
  const Format* findFormat(uint32_t pixelFormat) const;
  void showReadiness();
  static int answer(int error);

  mutable std::recursive_mutex mutex_;  // guards all below
  mutable std::condition_variable_any changed_;
  FileDescriptor fd_;
  int openError_ = 0;
  bool waitsWithoutLimit_ = false;
  bool unplugged_ = false;
  bool otherProgramStreams_ = false;
  std::map<unsigned long, std::pair<int, int>> failing_;
  int calls_ = 0;
  int failAt_ = 0;
  int failError_ = 0;
  bool failForEver_ = false;
  int open_ = 0;
  std::map<void*, size_t> mapped_;
  std::map<unsigned long, int> ioctls_;
  bool streaming_ = false;
  std::vector<Buffer> buffers_;
  std::deque<uint32_t> queued_;
  std::deque<uint32_t> filled_;
  uint32_t sequence_ = 0;
  std::optional<std::vector<uint8_t>> freeRunning_;
  std::optional<v4l2_pix_format> format_;
  std::optional<v4l2_fract> interval_;
  std::vector<std::string> violations_;
};

}  // namespace tessary::test
