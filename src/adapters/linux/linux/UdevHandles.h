#pragma once
// libudev's reference-counted objects, each let go where its owner ends.

#include <memory>

#include <libudev.h>

namespace tessary {

struct UdevUnref {
  void operator()(udev* object) const { udev_unref(object); }
  void operator()(udev_device* object) const { udev_device_unref(object); }
  void operator()(udev_enumerate* object) const { udev_enumerate_unref(object); }
  void operator()(udev_monitor* object) const { udev_monitor_unref(object); }
};

using UdevContext = std::unique_ptr<udev, UdevUnref>;
using UdevDevice = std::unique_ptr<udev_device, UdevUnref>;
using UdevEnumerate = std::unique_ptr<udev_enumerate, UdevUnref>;
using UdevMonitor = std::unique_ptr<udev_monitor, UdevUnref>;

}  // namespace tessary
