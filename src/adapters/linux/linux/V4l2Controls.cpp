#include "linux/V4l2Controls.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <linux/videodev2.h>

#include "base/Log.h"
#include "linux/ControlQuery.h"
#include "linux/DriverError.h"
#include "linux/WakeUp.h"

namespace tessary {
namespace {

/// Nobody is to feel a camera that hangs.
constexpr std::chrono::milliseconds kEndLimit{5};

}  // namespace

/// What the thread works with. All but the first block is its own.
class V4l2Controls::Worker {
 public:
  Worker(std::shared_ptr<V4l2Calls> calls, std::string devNode, std::string cameraName,
         Executor& mainQueue, Handler handler)
      : mainQueue_(&mainQueue),
        handler_(std::make_shared<const Handler>(std::move(handler))),
        calls_(std::move(calls)),
        devNode_(std::move(devNode)),
        cameraName_(std::move(cameraName)) {}

  // Main thread.

  uint64_t add(std::span<const ControlValue> values) {
    const std::lock_guard lock(mutex_);
    Request request{++lastRequest_, {values.begin(), values.end()}};
    // Of a slider that is faster than the camera only the newest value counts.
    const auto isSame = [&](const Request& waiting) {
      return values.size() == 1 && waiting.values.size() == 1 &&
             waiting.values.front().id == values.front().id;
    };
    if (!requests_.empty() && isSame(requests_.back())) requests_.pop_back();
    requests_.push_back(std::move(request));
    wakeUp_.signal();
    return lastRequest_;
  }

  /// Nothing is reported any more.
  void stop() {
    const std::lock_guard lock(mutex_);
    mainQueue_ = nullptr;
    handler_.reset();
    wakeUp_.signal();
  }

  // The thread.

  void run() {
    const VideoNode node(*calls_, devNode_);
    if (node.valid()) {
      readAll(node);
    } else {
      log("{}: its controls can't be read: {}", cameraName_, errorText(node.openError()));
      isGone_ = true;
    }
    tell();
    while (!isStopped()) {
      if (const auto request = nextRequest()) {
        perform(node, *request);
        readAll(node);
        report_.request = request->number;
        tell();
        report_.taken.clear();
        continue;
      }
      // A camera that is gone is closed when the program has heard of it, like the stream's node:
      // the driver may still be taking it away.
      pollfd descriptors[] = {{wakeUp_.fd(), POLLIN, 0}, {node.fd(), POLLPRI, 0}};
      calls_->poll(descriptors, isGone_ ? 1 : 2, -1);
      if (descriptors[0].revents) wakeUp_.drain();
      if (!isGone_ && descriptors[1].revents) takeEvents(node, descriptors[1].revents);
    }
  }

 private:
  struct Request {
    uint64_t number = 0;
    std::vector<ControlValue> values;
  };

  bool isStopped() {
    const std::lock_guard lock(mutex_);
    return mainQueue_ == nullptr;
  }

  std::optional<Request> nextRequest() {
    const std::lock_guard lock(mutex_);
    if (requests_.empty()) return std::nullopt;
    Request next = std::move(requests_.front());
    requests_.erase(requests_.begin());
    return next;
  }

  void perform(const VideoNode& node, const Request& request) {
    for (ControlValue value : request.values) {
      if (isStopped()) return;
      const int error = isGone_ ? ENODEV : setControl(node, value);
      if (error == 0)
        report_.taken.push_back(value);
      else
        log("{}: {} can't be set to {}: {}", cameraName_, nameOf(value.id), value.value,
            error == EACCES ? "the camera rules it itself now" : errorText(error));
      isGone_ = isGone_ || classify(error) == DriverError::Gone;
    }
  }

  std::string nameOf(uint32_t id) const {
    const auto found = std::ranges::find(report_.controls, id, &CameraControl::id);
    return found == report_.controls.end() ? fmt::format("control {:#x}", id) : found->name;
  }

  void readAll(const VideoNode& node) {
    if (isGone_) return;
    std::vector<CameraControl> controls;
    const int error = queryControls(node, controls);
    isGone_ = classify(error) == DriverError::Gone;
    if (error != 0)
      log("{}: not all of its controls can be read: {}", cameraName_, errorText(error));
    // Half a list is better than none, but no better than a whole one.
    if (error == 0 || controls.size() > report_.controls.size())
      report_.controls = std::move(controls);
    for (const CameraControl& control : report_.controls) {
      if (isGone_ || !listening_.insert(control.id).second) continue;
      v4l2_event_subscription subscription{};
      subscription.type = V4L2_EVENT_CTRL;
      subscription.id = control.id;
      // Not every driver has events: then changes from elsewhere show at the next request.
      node.ioctl(VIDIOC_SUBSCRIBE_EVENT, &subscription);
    }
  }

  void takeEvents(const VideoNode& node, short revents) {
    bool any = false;
    int error = 0;
    while (error == 0) {
      v4l2_event event{};
      error = node.ioctl(VIDIOC_DQEVENT, &event);
      any = any || error == 0;
    }
    // ENOENT says that there are no more. After anything else poll() would return at once for ever.
    isGone_ = error != ENOENT || (!any && (revents & (POLLERR | POLLHUP)));
    if (!any) return;
    readAll(node);
    tell();
  }

  void tell() {
    const std::lock_guard lock(mutex_);
    if (!mainQueue_) return;
    // Without a handler it was let go meanwhile.
    mainQueue_->post([weak = std::weak_ptr(handler_), report = report_] {
      if (const auto handler = weak.lock()) (*handler)(report);
    });
  }

  std::mutex mutex_;     // guards this block
  Executor* mainQueue_;  // null once it is to end
  std::shared_ptr<const Handler> handler_;
  std::vector<Request> requests_;
  uint64_t lastRequest_ = 0;

  WakeUp wakeUp_;
  const std::shared_ptr<V4l2Calls> calls_;
  const std::string devNode_;
  const std::string cameraName_;
  Report report_;
  std::set<uint32_t> listening_;
  bool isGone_ = false;
};

V4l2Controls::V4l2Controls(std::shared_ptr<V4l2Calls> calls, std::string devNode,
                           std::string cameraName, Executor& mainQueue, Handler handler)
    : worker_(std::make_shared<Worker>(std::move(calls), std::move(devNode), std::move(cameraName),
                                       mainQueue, std::move(handler))),
      thread_("com.tessary.camera.controls", kEndLimit) {
  thread_.post([worker = worker_] { worker->run(); });
}

V4l2Controls::~V4l2Controls() { worker_->stop(); }

uint64_t V4l2Controls::set(std::span<const ControlValue> values) { return worker_->add(values); }

}  // namespace tessary
