#pragma once

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <linux/videodev2.h>
#include <unistd.h>

#include "linux/V4l2Calls.h"
#include "linux/WakeUp.h"

namespace tessary::test {

/// A driver that has controls and nothing else. Any thread.
class FakeControlDriver final : public V4l2Calls {
 public:
  struct Control {
    v4l2_query_ext_ctrl query{};
    std::vector<std::pair<uint32_t, std::string>> names{};  ///< Of a menu.
    std::vector<std::pair<uint32_t, int64_t>> numbers{};    ///< Of a menu of numbers.
    int32_t value = 0;
    int setError = 0;
    int getError = 0;
  };

  static Control control(uint32_t id, v4l2_ctrl_type type, const char* name, int64_t minimum,
                         int64_t maximum, uint64_t step, int64_t usual, uint32_t flags = 0) {
    Control made;
    made.query.id = id;
    made.query.type = type;
    std::strncpy(made.query.name, name, sizeof made.query.name);
    made.query.minimum = minimum;
    made.query.maximum = maximum;
    made.query.step = step;
    made.query.default_value = usual;
    made.query.flags = flags;
    made.value = int32_t(usual);
    return made;
  }

  // The camera, to be set before it is used: controls by rising id.
  std::vector<Control> controls;
  int openError = 0;
  int queryError = 0;  ///< Of the control behind the first.
  bool hasEvents = true;
  /// Called without the lock when a control is set.
  std::function<void(uint32_t id)> beforeSetting;

  // Things that happen.
  /// By another program, or by the camera itself.
  void change(uint32_t id, int32_t value, uint32_t flags = 0) {
    const std::lock_guard lock(mutex_);
    find(id)->value = value;
    find(id)->query.flags = flags;
    if (std::ranges::find(subscribed_, id) == subscribed_.end()) return;
    events_.push_back(id);
    ready_.signal();
  }
  void unplug() {
    const std::lock_guard lock(mutex_);
    isGone_ = true;
    ready_.signal();
  }

  // What was done.
  std::vector<v4l2_ext_control> settings() const {
    const std::lock_guard lock(mutex_);
    return settings_;
  }
  int openNodes() const {
    const std::lock_guard lock(mutex_);
    return open_;
  }
  int polls() const {
    const std::lock_guard lock(mutex_);
    return polls_;
  }
  template <typename Condition>
  bool waitUntil(Condition condition) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30), condition);
  }
  bool waitForNoOpenNode() const {
    return waitUntil([this] { return open_ == 0; });
  }

  int open(const char*, int) override {
    const std::lock_guard lock(mutex_);
    if (openError != 0) return answer(openError);
    ++open_;
    return ready_.fd();
  }
  int close(int) override {
    const std::lock_guard lock(mutex_);
    --open_;
    changed_.notify_all();
    return 0;
  }
  int ioctl(int, unsigned long request, void* argument) override {
    if (request == VIDIOC_S_EXT_CTRLS && beforeSetting)
      beforeSetting(static_cast<v4l2_ext_controls*>(argument)->controls->id);
    const std::lock_guard lock(mutex_);
    const int error = isGone_ ? ENODEV : perform(request, argument);
    changed_.notify_all();
    return answer(error);
  }
  void* mmap(size_t, int, off_t) override { return nullptr; }
  int munmap(void*, size_t) override { return 0; }
  int poll(pollfd* descriptors, nfds_t count, int timeoutMilliseconds) override {
    std::vector<pollfd> real(descriptors, descriptors + count);
    // An eventfd knows no urgent data: what is ready to be read here stands for it.
    for (pollfd& descriptor : real)
      if (descriptor.fd == ready_.fd()) descriptor.events = POLLIN;
    {
      const std::lock_guard lock(mutex_);
      ++polls_;
      changed_.notify_all();
    }
    const int result = ::poll(real.data(), count, timeoutMilliseconds);
    for (nfds_t i = 0; i < count; ++i) {
      descriptors[i].revents = real[i].revents;
      if (real[i].fd != ready_.fd() || !real[i].revents) continue;
      const std::lock_guard lock(mutex_);
      descriptors[i].revents = isGone_ ? POLLERR | POLLHUP : POLLPRI;
    }
    return result;
  }

 private:
  static int answer(int error) {
    if (error == 0) return 0;
    errno = error;
    return -1;
  }
  Control* find(uint32_t id) {
    const auto found = std::ranges::find_if(
        controls, [id](const Control& control) { return control.query.id == id; });
    return found == controls.end() ? nullptr : &*found;
  }
  int perform(unsigned long request, void* argument) {
    switch (request) {
      case VIDIOC_QUERY_EXT_CTRL: return query(*static_cast<v4l2_query_ext_ctrl*>(argument));
      case VIDIOC_QUERYMENU: return queryMenu(*static_cast<v4l2_querymenu*>(argument));
      case VIDIOC_G_EXT_CTRLS:
      case VIDIOC_S_EXT_CTRLS: {
        v4l2_ext_control& wanted = *static_cast<v4l2_ext_controls*>(argument)->controls;
        Control* control = find(wanted.id);
        if (!control) return EINVAL;
        if (request == VIDIOC_G_EXT_CTRLS) {
          wanted.value = control->value;
          return control->getError;
        }
        settings_.push_back(wanted);
        if (control->setError != 0) return control->setError;
        if (control->query.type == V4L2_CTRL_TYPE_INTEGER)
          wanted.value -=
              int32_t((wanted.value - control->query.minimum) % int64_t(control->query.step));
        control->value = wanted.value;
        // Automatic exposure rules the time, as it does in real drivers.
        if (wanted.id == V4L2_CID_EXPOSURE_AUTO) {
          if (Control* time = find(V4L2_CID_EXPOSURE_ABSOLUTE))
            time->query.flags = wanted.value == V4L2_EXPOSURE_MANUAL ? 0 : V4L2_CTRL_FLAG_INACTIVE;
        }
        return 0;
      }
      case VIDIOC_SUBSCRIBE_EVENT:
        if (!hasEvents) return ENOTTY;
        subscribed_.push_back(static_cast<v4l2_event_subscription*>(argument)->id);
        return 0;
      case VIDIOC_DQEVENT:
        if (events_.empty()) return ENOENT;
        static_cast<v4l2_event*>(argument)->id = events_.front();
        events_.pop_front();
        if (events_.empty()) ready_.drain();
        return 0;
      default: return ENOTTY;
    }
  }
  int query(v4l2_query_ext_ctrl& entry) {
    const uint32_t flags = entry.id & V4L2_CTRL_FLAG_NEXT_CTRL;
    const uint32_t id = entry.id & ~flags;
    for (const Control& control : controls) {
      if (flags ? control.query.id <= id : control.query.id != id) continue;
      if (flags && id != 0 && queryError != 0) return queryError;
      entry = control.query;
      return 0;
    }
    return EINVAL;
  }
  int queryMenu(v4l2_querymenu& entry) {
    const Control* control = find(entry.id);
    if (!control) return EINVAL;
    for (const auto& [index, name] : control->names) {
      if (index != entry.index) continue;
      std::memcpy(entry.name, name.c_str(), name.size() + 1);
      return 0;
    }
    for (const auto& [index, number] : control->numbers) {
      if (index != entry.index) continue;
      entry.value = number;
      return 0;
    }
    return EINVAL;
  }

  mutable std::mutex mutex_;  // guards all below and the controls
  mutable std::condition_variable changed_;
  WakeUp ready_;  // the node's descriptor
  int open_ = 0;
  int polls_ = 0;
  bool isGone_ = false;
  std::vector<uint32_t> subscribed_;
  std::deque<uint32_t> events_;
  std::vector<v4l2_ext_control> settings_;
};

}  // namespace tessary::test
