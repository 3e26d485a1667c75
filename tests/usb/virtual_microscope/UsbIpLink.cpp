#include "virtual_microscope/UsbIpLink.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>

#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include "virtual_microscope/Say.h"

namespace tessary::lab {
namespace {

constexpr const char* kAttach = "/sys/devices/platform/vhci_hcd.0/attach";
constexpr const char* kDetach = "/sys/devices/platform/vhci_hcd.0/detach";
constexpr unsigned kHighSpeed = 3;
constexpr unsigned kFirstDevice = 0x10002;  // bus 1, device 2

// Messages are 48 bytes, numbers with their highest byte first.
constexpr size_t kMessage = 48;
constexpr size_t kCommand = 0;
constexpr size_t kSequence = 4;
constexpr size_t kDirection = 12;
constexpr size_t kEndpoint = 16;
constexpr size_t kUnlinked = 20;  // of an unlink
constexpr size_t kStatus = 20;    // of an answer
constexpr size_t kLength = 24;
constexpr size_t kSetup = 40;

constexpr uint32_t kSubmit = 1;
constexpr uint32_t kUnlink = 2;
constexpr uint32_t kSubmitAnswer = 3;
constexpr uint32_t kUnlinkAnswer = 4;
constexpr uint32_t kDirectionToHost = 1;

uint32_t get(const Bytes& message, size_t at) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) value = value << 8 | message[at + i];
  return value;
}

void put(Bytes& message, size_t at, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) message[at + i] = uint8_t(value >> (24 - 8 * i));
}

Bytes answer(uint32_t command, uint32_t sequence, int status) {
  Bytes message(kMessage);
  put(message, kCommand, command);
  put(message, kSequence, sequence);
  put(message, kStatus, uint32_t(status));
  return message;
}

bool writeAttribute(const char* path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.flush();
  return file.good();
}

}  // namespace

bool UsbIpLink::attach() {
  if (isAttached()) return true;
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    say("no socket: {}", std::strerror(errno));
    return false;
  }
  const std::string request =
      fmt::format("{} {} {} {}", port_, ends[1], kFirstDevice + port_, kHighSpeed);
  const bool attached = writeAttribute(kAttach, request);
  close(ends[1]);  // the kernel holds it by itself
  socket_ = ends[0];
  if (attached) return true;
  closeSocket();
  say("the kernel refuses to attach to port {}", port_);
  return false;
}

void UsbIpLink::detach() {
  if (!isAttached()) return;
  writeAttribute(kDetach, fmt::format("{}", port_));
  closeSocket();
}

std::optional<HostMessage> UsbIpLink::receive() {
  Bytes header(kMessage);
  if (!readAll(header.data(), header.size())) {
    closeSocket();
    return std::nullopt;
  }
  HostMessage message;
  message.sequence = get(header, kSequence);
  if (get(header, kCommand) == kUnlink) {
    message.kind = HostMessage::Kind::Unlink;
    message.unlinked = get(header, kUnlinked);
    return message;
  }
  message.toHost = get(header, kDirection) == kDirectionToHost;
  message.endpoint = get(header, kEndpoint);
  message.length = get(header, kLength);
  std::memcpy(message.setup.data(), header.data() + kSetup, message.setup.size());
  if (!message.toHost) message.data.resize(message.length);
  if (get(header, kCommand) == kSubmit && readAll(message.data.data(), message.data.size()))
    return message;
  closeSocket();
  return std::nullopt;
}

void UsbIpLink::complete(uint32_t sequence, int status, uint32_t transferred, const Bytes& data) {
  Bytes message = answer(kSubmitAnswer, sequence, status);
  put(message, kLength, transferred);
  append(message, data);
  writeAll(message);
}

void UsbIpLink::completeUnlink(uint32_t sequence, int status) {
  writeAll(answer(kUnlinkAnswer, sequence, status));
}

bool UsbIpLink::readAll(void* data, size_t size) const {
  auto* next = static_cast<uint8_t*>(data);
  while (size > 0) {
    const ssize_t count = recv(socket_, next, size, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    next += count;
    size -= size_t(count);
  }
  return true;
}

void UsbIpLink::writeAll(const Bytes& bytes) const {
  size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count =
        send(socket_, bytes.data() + written, bytes.size() - written, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;  // a host that hung up is met by the next receive
    written += size_t(count);
  }
}

void UsbIpLink::closeSocket() {
  if (socket_ >= 0) close(socket_);
  socket_ = -1;
}

}  // namespace tessary::lab
