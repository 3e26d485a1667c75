#pragma once

#include <chrono>
#include <functional>
#include <thread>

#include "linux/NodeSource.h"
#include "linux/WakeUp.h"

namespace tessary {

/// The video nodes that udev knows. Where no udev daemon runs (a container, a rescue system) it
/// takes the kernel's word.
class UdevNodeSource final : public NodeSource {
 public:
  /// Whether the daemon runs. It settles a node's permissions and properties, and announces it
  /// then.
  static bool daemonRuns();

  /// `again` is the pause before a node that was not usable is looked at once more.
  explicit UdevNodeSource(bool daemonRuns = UdevNodeSource::daemonRuns(),
                          std::chrono::milliseconds again = std::chrono::seconds(1));
  ~UdevNodeSource() override;

  std::vector<NodeRecord> nodes() override;
  void watch(std::function<bool()> changed) override;
  void stopWatching() override;

 private:
  void run(int monitorFd, const std::function<int()>& receive,
           const std::function<bool()>& changed);

  const bool daemonRuns_;
  const std::chrono::milliseconds again_;
  WakeUp stop_;
  std::jthread thread_;
};

}  // namespace tessary
