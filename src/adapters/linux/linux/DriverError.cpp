#include "linux/DriverError.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <fmt/format.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessary {
namespace {

// The group that a user must join to use the node; cameras belong to "video" by custom.
std::string groupOf(const std::string& devNode) {
  struct stat status;
  if (::stat(devNode.c_str(), &status) != 0 || status.st_gid == 0) return "video";
  std::array<char, 4096> text;
  struct group entry;
  struct group* found = nullptr;
  if (::getgrgid_r(status.st_gid, &entry, text.data(), text.size(), &found) != 0 || !found)
    return "video";
  return found->gr_name;
}

}  // namespace

DriverError classify(int error) noexcept {
  switch (error) {
    case 0: return DriverError::None;
    case ENODEV:
    case ENXIO:
    case EBADF: return DriverError::Gone;
    case EBUSY:
    case ENOSPC:
    case ENOMEM:
    case EINVAL:
    case ENOTTY:
    case EACCES:
    case EPERM:
    case EFAULT:
    case EMFILE:
    case ENFILE: return DriverError::Lasting;
    default:
      // EIO, EPROTO, EPIPE, ETIMEDOUT, ESHUTDOWN, ... : the many voices of a USB transfer.
      return DriverError::Passing;
  }
}

std::string errorText(int error) { return std::generic_category().message(error); }

std::string openFailureText(const std::string& devNode, int error) {
  switch (error) {
    case EBUSY:
      return "Another program is using the camera. Close that program, then choose the camera "
             "again.";
    case EACCES:
    case EPERM: {
      const std::string group = groupOf(devNode);
      return fmt::format(
          "You have no permission to use {0}. Add yourself to the group \"{1}\" with "
          "\"sudo usermod -aG {1} $USER\", then log out and in again.",
          devNode, group);
    }
    case ENOENT:
    case ENODEV:
    case ENXIO: return "The camera is not connected any more. Plug it in again.";
    case EMFILE:
    case ENFILE:
      return "Too many files are open. Close other programs, then choose the camera again.";
    default:
      return fmt::format("{} can't be opened: {}. Unplug the camera and plug it in again.", devNode,
                         errorText(error));
  }
}

std::string streamFailureText(const std::string& cameraName, int error) {
  switch (error) {
    case EBUSY:
      return fmt::format(
          "Another program is using {}. Close that program, then choose the camera again.",
          cameraName);
    case ENOSPC:
      return fmt::format(
          "The USB bus has no room for the pictures of {}. Plug it into another port, away from "
          "other cameras, or choose a smaller resolution.",
          cameraName);
    case ENOMEM:
      return fmt::format(
          "There is no memory for the pictures of {}. Close other programs or choose a smaller "
          "resolution.",
          cameraName);
    default:
      return fmt::format("{} can't send pictures: {}. Choose another resolution.", cameraName,
                         errorText(error));
  }
}

}  // namespace tessary
