#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tessary {

/// One video node of the machine as the device manager knows it. What is not known is empty.
struct NodeRecord {
  std::string sysPath;
  /// Differs for a camera that left and came back under the same sysPath.
  std::string connectionID;
  std::string devNode;
  /// The port that the camera is plugged into; the same after a restart.
  std::string path;
  bool isUsb = false;
  uint32_t vendorID = 0;
  uint32_t productID = 0;
  std::string serial;
  std::string product;
  std::string manufacturer;
  /// Which of its interface's video nodes this is.
  std::string index;
  /// Whether the node records pictures, as far as can be told without opening it.
  bool saysItCaptures = false;
  friend bool operator==(const NodeRecord&, const NodeRecord&) = default;
};

/// Lists the machine's video nodes and watches for changes.
class NodeSource {
 public:
  virtual ~NodeSource() = default;
  /// The nodes that are ready for use, in the order of their names. Any thread.
  virtual std::vector<NodeRecord> nodes() = 0;
  /// From now on calls `changed` on a thread of its own after nodes came or went. As long as it
  /// answers false (a node is not usable yet) it is called again, a few times. Once.
  virtual void watch(std::function<bool()> changed) = 0;
  /// When it returns, `changed` is not called any more.
  virtual void stopWatching() = 0;
};

}  // namespace tessary
