#include "linux/UdevNodeSource.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Log.h"
#include "linux/CameraIdentity.h"
#include "linux/DriverError.h"
#include "linux/UdevHandles.h"

namespace tessary {
namespace {

constexpr const char* kSubsystem = "video4linux";
// A hub full of cameras speaks all at once.
constexpr int kReceiveBytes = 1 << 20;
constexpr int kMostRetries = 5;

std::string text(const char* value) { return value ? value : ""; }

uint32_t hexNumber(const std::string& digits) {
  uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return number;
}

std::string firstOf(const std::string& a, const std::string& b) { return a.empty() ? b : a; }

// The kernel numbers sysfs folders as it makes them, and the devices of a bus as they are plugged
// in.
std::string connectionIDOf(const std::string& sysPath, udev_device* usb) {
  struct stat status {};
  ::stat(sysPath.c_str(), &status);
  return fmt::format("{}/{}", uint64_t(status.st_ino),
                     usb ? text(udev_device_get_sysattr_value(usb, "devnum")) : "");
}

NodeRecord recordOf(udev_device* device) {
  const auto property = [&](const char* name) {
    return text(udev_device_get_property_value(device, name));
  };
  // Borrowed from `device`, as parents are.
  udev_device* usb = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
  const auto usbAttribute = [&](const char* name) {
    return usb ? text(udev_device_get_sysattr_value(usb, name)) : std::string();
  };
  NodeRecord node;
  node.sysPath = text(udev_device_get_syspath(device));
  node.connectionID = connectionIDOf(node.sysPath, usb);
  node.devNode = text(udev_device_get_devnode(device));
  node.isUsb = usb != nullptr || property("ID_BUS") == "usb";
  node.path = property("ID_PATH");
  if (node.path.empty()) {
    udev_device* parent = udev_device_get_parent(device);
    node.path = text(udev_device_get_devpath(parent ? parent : device));
  }
  if (node.isUsb) {
    // The same property names mean something else for a card on the PCI bus.
    node.vendorID = hexNumber(firstOf(usbAttribute("idVendor"), property("ID_VENDOR_ID")));
    node.productID = hexNumber(firstOf(usbAttribute("idProduct"), property("ID_MODEL_ID")));
    node.serial = firstOf(property("ID_SERIAL_SHORT"), usbAttribute("serial"));
    node.product = firstOf(usbAttribute("product"), unescapeUdev(property("ID_MODEL_ENC")));
    node.manufacturer =
        firstOf(usbAttribute("manufacturer"), unescapeUdev(property("ID_VENDOR_ENC")));
  }
  node.index = text(udev_device_get_sysattr_value(device, "index"));
  node.saysItCaptures = property("ID_V4L_CAPABILITIES").find(":capture:") != std::string::npos;
  return node;
}

// "video10" after "video9".
bool nodeOrder(const NodeRecord& a, const NodeRecord& b) {
  if (a.devNode.size() != b.devNode.size()) return a.devNode.size() < b.devNode.size();
  return std::pair(a.devNode, a.sysPath) < std::pair(b.devNode, b.sysPath);
}

}  // namespace

bool UdevNodeSource::daemonRuns() { return ::access("/run/udev/control", F_OK) == 0; }

UdevNodeSource::UdevNodeSource(bool daemonRuns, std::chrono::milliseconds again)
    : daemonRuns_(daemonRuns), again_(again) {}

UdevNodeSource::~UdevNodeSource() { stopWatching(); }

std::vector<NodeRecord> UdevNodeSource::nodes() {
  std::vector<NodeRecord> found;
  // A context of its own for every call: libudev's objects belong to one thread.
  const UdevContext context(udev_new());
  const UdevEnumerate enumerate(context ? udev_enumerate_new(context.get()) : nullptr);
  if (!enumerate) return found;
  udev_enumerate_add_match_subsystem(enumerate.get(), kSubsystem);
  udev_enumerate_scan_devices(enumerate.get());
  udev_list_entry* entry;
  udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate.get())) {
    const UdevDevice device(
        udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
    if (!device || !udev_device_get_devnode(device.get())) continue;
    if (daemonRuns_ && !udev_device_get_is_initialized(device.get())) continue;
    found.push_back(recordOf(device.get()));
  }
  std::sort(found.begin(), found.end(), nodeOrder);
  return found;
}

void UdevNodeSource::watch(std::function<bool()> changed) {
  UdevContext context(udev_new());
  // The daemon's own events come when a node's permissions are settled; the kernel's come before.
  UdevMonitor monitor(
      context ? udev_monitor_new_from_netlink(context.get(), daemonRuns_ ? "udev" : "kernel")
              : nullptr);
  if (!monitor ||
      udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), kSubsystem, nullptr) < 0 ||
      udev_monitor_enable_receiving(monitor.get()) < 0) {
    log("Cameras that are plugged in from now on won't be noticed: udev can't be reached");
    return;
  }
  // Needs a privilege beyond a system limit; the ordinary size does for ordinary machines.
  udev_monitor_set_receive_buffer_size(monitor.get(), kReceiveBytes);
  thread_ = std::jthread([this, context = std::move(context), monitor = std::move(monitor),
                          changed = std::move(changed)] {
    const auto receive = [&] {
      int events = 0;
      while (UdevDevice(udev_monitor_receive_device(monitor.get()))) ++events;
      return events;
    };
    run(udev_monitor_get_fd(monitor.get()), receive, changed);
  });
  pthread_setname_np(thread_.native_handle(), "camera-watch");
}

void UdevNodeSource::run(int monitorFd, const std::function<int()>& receive,
                         const std::function<bool()>& changed) {
  // The first look may have come before the nodes' permissions.
  int retries = kMostRetries;
  for (;;) {
    pollfd descriptors[] = {{stop_.fd(), POLLIN, 0}, {monitorFd, POLLIN, 0}};
    const int ready = ::poll(descriptors, 2, retries > 0 ? int(again_.count()) : -1);
    if (ready < 0 && errno != EINTR) {
      log("Cameras that are plugged in from now on won't be noticed: {}", errorText(errno));
      return;
    }
    if (ready < 0) continue;
    if (descriptors[0].revents) return;
    if (descriptors[1].revents & (POLLHUP | POLLNVAL)) {
      log("Cameras that are plugged in from now on won't be noticed: udev hung up");
      return;
    }
    bool news = ready == 0;
    if (ready == 0) {
      --retries;
    } else if (descriptors[1].revents) {
      // Also when nothing came out of it: that is how an overflow shows, and it hides changes.
      receive();
      news = true;
      retries = kMostRetries;
    }
    if (news && changed()) retries = 0;
  }
}

void UdevNodeSource::stopWatching() {
  if (!thread_.joinable()) return;
  stop_.signal();
  thread_.join();
}

}  // namespace tessary
