#include "FakeVideoDriver.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tessary::test {

using Lock = std::unique_lock<std::recursive_mutex>;

FakeVideoDriver::FakeVideoDriver()
    : formats{{V4L2_PIX_FMT_MJPEG, {{64, 48}, {32, 24}}}, {V4L2_PIX_FMT_YUYV, {{8, 4}}}},
      fd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

// ---- Things that happen

bool FakeVideoDriver::push(Frame frame) {
  const Lock lock(mutex_);
  return fill(frame);
}

bool FakeVideoDriver::fill(const Frame& frame) {
  if (!streaming_ || unplugged_) return false;
  sequence_ += frame.lost;
  const uint32_t sequence = sequence_++;
  if (queued_.empty()) return false;
  const uint32_t index = queued_.front();
  queued_.pop_front();
  Buffer& buffer = buffers_[index];
  const size_t count = std::min<size_t>(frame.bytes.size(), bufferBytes);
  if (count > 0) std::memcpy(buffer.memory.get(), frame.bytes.data(), count);
  buffer.state = BufferState::Filled;
  buffer.filled = {};
  buffer.filled.index = index;
  buffer.filled.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  buffer.filled.memory = V4L2_MEMORY_MMAP;
  buffer.filled.flags = frame.flags | V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
  buffer.filled.bytesused = frame.bytesused.value_or(uint32_t(count));
  buffer.filled.length = bufferBytes;
  buffer.filled.sequence = sequence;
  buffer.filled.timestamp.tv_sec = frame.stamp.count() / 1'000'000;
  buffer.filled.timestamp.tv_usec = frame.stamp.count() % 1'000'000;
  filled_.push_back(index);
  showReadiness();
  changed_.notify_all();
  return true;
}

void FakeVideoDriver::runFreely(std::vector<uint8_t> bytes) {
  const Lock lock(mutex_);
  freeRunning_ = std::move(bytes);
  showReadiness();
}

void FakeVideoDriver::beSilent() {
  const Lock lock(mutex_);
  freeRunning_.reset();
  showReadiness();
}

void FakeVideoDriver::unplug() {
  const Lock lock(mutex_);
  unplugged_ = true;
  showReadiness();
}

void FakeVideoDriver::setOpenError(int error) {
  const Lock lock(mutex_);
  openError_ = error;
}

void FakeVideoDriver::setOtherProgramStreams(bool streams) {
  const Lock lock(mutex_);
  otherProgramStreams_ = streams;
}

void FakeVideoDriver::failIoctl(unsigned long request, int error, int times) {
  const Lock lock(mutex_);
  failing_[request] = {error, times};
}

void FakeVideoDriver::failCall(int number, int error, bool forEver) {
  const Lock lock(mutex_);
  calls_ = 0;
  failAt_ = number;
  failError_ = error;
  failForEver_ = forEver;
}

// ---- What was done

int FakeVideoDriver::calls() const {
  const Lock lock(mutex_);
  return calls_;
}

bool FakeVideoDriver::unplugged() const {
  const Lock lock(mutex_);
  return unplugged_;
}

int FakeVideoDriver::openDescriptors() const {
  const Lock lock(mutex_);
  return open_;
}

int FakeVideoDriver::mappings() const {
  const Lock lock(mutex_);
  return int(mapped_.size());
}

int FakeVideoDriver::ioctls(unsigned long request) const {
  const Lock lock(mutex_);
  const auto found = ioctls_.find(request);
  return found == ioctls_.end() ? 0 : found->second;
}

bool FakeVideoDriver::streaming() const {
  const Lock lock(mutex_);
  return streaming_;
}

bool FakeVideoDriver::waitsWithoutLimit() const {
  const Lock lock(mutex_);
  return waitsWithoutLimit_;
}

std::optional<v4l2_pix_format> FakeVideoDriver::formatSet() const {
  const Lock lock(mutex_);
  return format_;
}

std::optional<v4l2_fract> FakeVideoDriver::intervalSet() const {
  const Lock lock(mutex_);
  return interval_;
}

std::vector<std::string> FakeVideoDriver::violations() const {
  const Lock lock(mutex_);
  return violations_;
}

bool FakeVideoDriver::waitUntil(const std::function<bool()>& condition) const {
  Lock lock(mutex_);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    // What the condition looks at may be no business of the driver's.
    changed_.wait_for(lock, std::chrono::milliseconds(5));
  }
  return true;
}

bool FakeVideoDriver::waitForStreamOn(int times) const {
  return waitUntil([&] {
    const auto found = ioctls_.find(VIDIOC_STREAMON);
    return found != ioctls_.end() && found->second >= times && streaming_;
  });
}

// ---- The calls

int FakeVideoDriver::answer(int error) {
  if (error == 0) return 0;
  errno = error;
  return -1;
}

int FakeVideoDriver::dueFailure() {
  ++calls_;
  changed_.notify_all();
  if (unplugged_) return ENODEV;
  if (failAt_ == 0 || calls_ < failAt_) return 0;
  if (!failForEver_ && calls_ > failAt_) return 0;
  if (failForEver_ && failError_ == ENODEV) {
    unplugged_ = true;
    showReadiness();
  }
  return failError_;
}

int FakeVideoDriver::open(const char*, int flags) {
  const Lock lock(mutex_);
  if (const int error = dueFailure()) return answer(error);
  if (openError_ != 0) return answer(openError_);
  if (!(flags & O_NONBLOCK)) violations_.emplace_back("opened to block");
  ++open_;
  return fd_.get();
}

int FakeVideoDriver::close(int) {
  const Lock lock(mutex_);
  --open_;
  if (streaming_ && open_ == 0) streaming_ = false;
  if (open_ == 0) {
    buffers_.clear();
    queued_.clear();
    filled_.clear();
  }
  return answer(dueFailure());
}

int FakeVideoDriver::ioctl(int, unsigned long request, void* argument) {
  const Lock lock(mutex_);
  if (open_ <= 0) violations_.emplace_back("ioctl on a closed node");
  ++ioctls_[request];
  if (const int error = dueFailure()) return answer(error);
  auto& [error, times] = failing_[request];
  if (times > 0) {
    --times;
    return answer(error);
  }
  const int result = perform(request, argument);
  showReadiness();
  changed_.notify_all();
  return answer(result);
}

int FakeVideoDriver::perform(unsigned long request, void* argument) {
  switch (request) {
    case VIDIOC_QUERYCAP: {
      auto& capability = *static_cast<v4l2_capability*>(argument);
      capability = {};
      // 32 bytes, with no end mark when the name fills them.
      std::memcpy(capability.card, card.data(), std::min(card.size(), sizeof capability.card));
      capability.device_caps = capabilities;
      capability.capabilities =
          capabilities | V4L2_CAP_DEVICE_CAPS | V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE;
      return 0;
    }
    case VIDIOC_ENUM_FMT: return enumerateFormat(*static_cast<v4l2_fmtdesc*>(argument));
    case VIDIOC_ENUM_FRAMESIZES: return enumerateSize(*static_cast<v4l2_frmsizeenum*>(argument));
    case VIDIOC_ENUM_FRAMEINTERVALS:
      return enumerateInterval(*static_cast<v4l2_frmivalenum*>(argument));
    case VIDIOC_G_FMT: {
      if (formats.empty()) return EINVAL;
      auto& pix = static_cast<v4l2_format*>(argument)->fmt.pix;
      pix = {};
      // Cameras wake up in the last of their formats here, so that a default is told from a first.
      pix.pixelformat = formats.back().pixelFormat;
      if (!formats.back().sizes.empty()) {
        pix.width = formats.back().sizes.back().width;
        pix.height = formats.back().sizes.back().height;
      }
      return 0;
    }
    case VIDIOC_S_FMT: return setFormat(*static_cast<v4l2_format*>(argument));
    case VIDIOC_G_PARM:
    case VIDIOC_S_PARM: {
      if (!knowsFrameRates) return ENOTTY;
      auto& interval = static_cast<v4l2_streamparm*>(argument)->parm.capture.timeperframe;
      if (request == VIDIOC_S_PARM)
        interval_ = interval;
      else
        interval = {1, 30};
      return 0;
    }
    case VIDIOC_REQBUFS: return requestBuffers(*static_cast<v4l2_requestbuffers*>(argument));
    case VIDIOC_QUERYBUF: {
      auto& buffer = *static_cast<v4l2_buffer*>(argument);
      if (buffer.index >= buffers_.size()) return EINVAL;
      buffer.length = bufferBytes;
      buffer.m.offset = buffer.index * 0x10000;
      return 0;
    }
    case VIDIOC_QBUF: return queueBuffer(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_DQBUF: return dequeueBuffer(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMON:
      if (buffers_.empty()) return EINVAL;
      streaming_ = true;
      sequence_ = 0;
      return 0;
    case VIDIOC_STREAMOFF:
      streaming_ = false;
      queued_.clear();
      filled_.clear();
      for (Buffer& buffer : buffers_) buffer.state = BufferState::Dequeued;
      return 0;
    default: violations_.emplace_back("unknown ioctl"); return ENOTTY;
  }
}

const FakeVideoDriver::Format* FakeVideoDriver::findFormat(uint32_t pixelFormat) const {
  const auto found = std::find_if(formats.begin(), formats.end(),
                                  [&](const Format& f) { return f.pixelFormat == pixelFormat; });
  return found == formats.end() ? nullptr : &*found;
}

int FakeVideoDriver::enumerateFormat(v4l2_fmtdesc& entry) const {
  if (entry.index >= formats.size()) return EINVAL;
  entry.pixelformat = formats[entry.index].pixelFormat;
  return 0;
}

int FakeVideoDriver::enumerateSize(v4l2_frmsizeenum& entry) const {
  const Format* format = findFormat(entry.pixel_format);
  if (!format) return EINVAL;
  if (format->range) {
    if (entry.index > 0) return EINVAL;
    entry.type = V4L2_FRMSIZE_TYPE_STEPWISE;
    entry.stepwise = *format->range;
    return 0;
  }
  if (entry.index >= format->sizes.size()) return EINVAL;
  entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
  entry.discrete = {format->sizes[entry.index].width, format->sizes[entry.index].height};
  return 0;
}

int FakeVideoDriver::enumerateInterval(v4l2_frmivalenum& entry) const {
  const Format* format = findFormat(entry.pixel_format);
  if (!format) return EINVAL;
  if (format->intervalRange) {
    if (entry.index > 0) return EINVAL;
    entry.type = V4L2_FRMIVAL_TYPE_CONTINUOUS;
    entry.stepwise = *format->intervalRange;
    return 0;
  }
  for (const Size& size : format->sizes) {
    if (size.width != entry.width || size.height != entry.height) continue;
    if (entry.index >= size.intervals.size()) return EINVAL;
    entry.type = V4L2_FRMIVAL_TYPE_DISCRETE;
    entry.discrete = size.intervals[entry.index];
    return 0;
  }
  return EINVAL;
}

int FakeVideoDriver::setFormat(v4l2_format& format) {
  if (otherProgramStreams_ || !buffers_.empty()) return EBUSY;
  v4l2_pix_format& pix = format.fmt.pix;
  if (answeredSize) {
    pix.width = answeredSize->width;
    pix.height = answeredSize->height;
  }
  pix.bytesperline = pix.pixelformat == V4L2_PIX_FMT_MJPEG  ? 0
                     : pix.pixelformat == V4L2_PIX_FMT_NV12 ? pix.width + paddingPerRow
                                                            : pix.width * 2 + paddingPerRow;
  format_ = pix;
  return 0;
}

int FakeVideoDriver::requestBuffers(v4l2_requestbuffers& request) {
  if (request.memory != V4L2_MEMORY_MMAP) violations_.emplace_back("buffers that are not mapped");
  if (otherProgramStreams_ || streaming_) return EBUSY;
  if (!mapped_.empty()) violations_.emplace_back("buffers given back while mapped");
  buffers_.clear();
  queued_.clear();
  filled_.clear();
  request.count = std::min(request.count, bufferCount);
  for (unsigned i = 0; i < request.count; ++i)
    buffers_.push_back({std::make_unique<uint8_t[]>(bufferBytes)});
  return 0;
}

int FakeVideoDriver::queueBuffer(const v4l2_buffer& buffer) {
  if (buffer.index >= buffers_.size()) return EINVAL;
  if (buffers_[buffer.index].state != BufferState::Dequeued) {
    violations_.emplace_back("a buffer queued twice");
    return EINVAL;
  }
  buffers_[buffer.index].state = BufferState::Queued;
  queued_.push_back(buffer.index);
  return 0;
}

int FakeVideoDriver::dequeueBuffer(v4l2_buffer& buffer) {
  if (!streaming_) return EINVAL;
  if (filled_.empty()) return EAGAIN;
  const uint32_t index = filled_.front();
  filled_.pop_front();
  buffer = buffers_[index].filled;
  buffers_[index].state = BufferState::Dequeued;
  return 0;
}

void* FakeVideoDriver::mmap(size_t length, int, off_t offset) {
  const Lock lock(mutex_);
  if (const int error = dueFailure()) {
    errno = error;
    return MAP_FAILED;
  }
  const auto index = size_t(offset / 0x10000);
  if (index >= buffers_.size() || length != bufferBytes) {
    errno = EINVAL;
    return MAP_FAILED;
  }
  void* address = buffers_[index].memory.get();
  mapped_[address] = length;
  return address;
}

int FakeVideoDriver::munmap(void* address, size_t length) {
  const Lock lock(mutex_);
  const auto found = mapped_.find(address);
  if (found == mapped_.end() || found->second != length)
    violations_.emplace_back("unmapped what was not mapped");
  else
    mapped_.erase(found);
  return answer(dueFailure());
}

void FakeVideoDriver::showReadiness() {
  uint64_t count = 1;
  const bool ready =
      unplugged_ || !filled_.empty() || (freeRunning_ && streaming_ && !queued_.empty());
  if (ready) [[maybe_unused]]
    const auto written = ::write(fd_.get(), &count, sizeof count);
  else [[maybe_unused]]
    const auto got = ::read(fd_.get(), &count, sizeof count);
}

int FakeVideoDriver::poll(pollfd* descriptors, nfds_t count, int timeoutMilliseconds) {
  pollfd* ours = std::find_if(descriptors, descriptors + count,
                              [&](const pollfd& descriptor) { return descriptor.fd == fd_.get(); });
  const bool concernsUs = ours != descriptors + count;
  if (concernsUs) {
    const Lock lock(mutex_);
    if (const int error = dueFailure(); error != 0 && !unplugged_) return answer(error);
  } else {
    const Lock lock(mutex_);
    waitsWithoutLimit_ = timeoutMilliseconds < 0;
    changed_.notify_all();
  }
  // A frame a millisecond: a camera without a pace of its own would let nobody else at the lock.
  if (concernsUs) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  const int ready = ::poll(descriptors, count, timeoutMilliseconds);
  if (concernsUs && ready > 0 && ours->revents) {
    const Lock lock(mutex_);
    if (unplugged_) {
      ours->revents = POLLERR | POLLHUP;
    } else if (freeRunning_ && filled_.empty()) {
      fill({*freeRunning_, MediaTime(int64_t(sequence_) * 33'333 + 1)});
    }
  }
  return ready;
}

}  // namespace tessary::test
