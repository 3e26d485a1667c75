#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "virtual_microscope/Bytes.h"

namespace tessary::lab {

/// One message of the host: a transfer that it asks for, or one that it no longer wants.
struct HostMessage {
  enum class Kind { Transfer, Unlink } kind = Kind::Transfer;
  uint32_t sequence = 0;
  bool toHost = false;
  uint32_t endpoint = 0;
  uint32_t length = 0;             // bytes wanted or sent
  std::array<uint8_t, 8> setup{};  // of a control transfer
  Bytes data;                      // that the host sends
  uint32_t unlinked = 0;           // the transfer that is no longer wanted
};

/// The cable: a port of the kernel's virtual host controller, which speaks the USB/IP protocol over
/// a socket. Needs root and the module vhci_hcd.
class UsbIpLink {
 public:
  explicit UsbIpLink(unsigned port) : port_(port) {}
  ~UsbIpLink() { detach(); }
  UsbIpLink(const UsbIpLink&) = delete;
  UsbIpLink& operator=(const UsbIpLink&) = delete;

  /// False, and it says why, if the kernel refuses.
  bool attach();
  void detach();
  bool isAttached() const { return socket_ >= 0; }
  /// To wait for messages; -1 while detached.
  int socket() const { return socket_; }

  /// Waits for a message. Nothing once the host has hung up, and the link is detached then.
  std::optional<HostMessage> receive();

  /// `status` is 0 or a negative errno; `transferred` counts bytes in either direction.
  void complete(uint32_t sequence, int status, uint32_t transferred, const Bytes& data = {});
  void completeUnlink(uint32_t sequence, int status);

 private:
  bool readAll(void* data, size_t size) const;
  void writeAll(const Bytes& bytes) const;
  void closeSocket();

  unsigned port_;
  int socket_ = -1;
};

}  // namespace tessary::lab
