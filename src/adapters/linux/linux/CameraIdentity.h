#pragma once
// Names and numbers that a camera is known by, made from what udev and its driver say.

#include <string>
#include <string_view>

#include "linux/NodeSource.h"

namespace tessary {

/// "UVC Camera VendorID_1374 ProductID_41312".
std::string usbModelID(uint32_t vendorID, uint32_t productID);

/// udev's "\x20" as the byte it stands for. Anything else stays.
std::string unescapeUdev(std::string_view text);

/// `text` without blanks around it, and with a question mark for every byte that is a control
/// character or no UTF-8: device texts are whatever their maker burnt in.
std::string printableText(std::string_view text);

/// Names the port, the model, the copy of it and the node. Equal after a restart or a replug at the
/// same port; of present cameras nearly always different (twins on twin ports are not).
std::string portIdentity(const NodeRecord& node);

/// What the user calls the camera: its product text, else what its driver calls it.
std::string displayName(const NodeRecord& node, const std::string& card);

}  // namespace tessary
