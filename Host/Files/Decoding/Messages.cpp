// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/Messages.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace ScEng {
namespace {

bool SendAll(int socket, const std::uint8_t* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t sent = send(socket, bytes, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return true;
}

bool ReceiveAll(int socket, std::uint8_t* bytes, std::size_t size, int& descriptor) {
  while (size > 0) {
    int came = -1;
    const ssize_t got = ReceiveWithDescriptor(socket, bytes, size, came, 0);
    if (came >= 0 && descriptor >= 0) close(descriptor);
    if (came >= 0) descriptor = came;
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    bytes += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace

ssize_t SendWithDescriptor(int socket, const void* bytes, std::size_t size, int descriptor, int flags) noexcept {
  iovec piece{const_cast<void*>(bytes), size};
  msghdr message{};
  message.msg_iov = &piece;
  message.msg_iovlen = 1;
  alignas(cmsghdr) char space[CMSG_SPACE(sizeof(int))] = {};
  if (descriptor >= 0) {
    message.msg_control = space;
    message.msg_controllen = sizeof space;
    cmsghdr* const control = CMSG_FIRSTHDR(&message);
    control->cmsg_level = SOL_SOCKET;
    control->cmsg_type = SCM_RIGHTS;
    control->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(control), &descriptor, sizeof descriptor);
  }
  return sendmsg(socket, &message, flags | MSG_NOSIGNAL);
}

ssize_t ReceiveWithDescriptor(int socket, void* bytes, std::size_t size, int& descriptor, int flags) noexcept {
  descriptor = -1;
  iovec piece{bytes, size};
  msghdr message{};
  message.msg_iov = &piece;
  message.msg_iovlen = 1;
  // There is room for one descriptor; the system closes what comes beyond it.
  alignas(cmsghdr) char space[CMSG_SPACE(sizeof(int))] = {};
  message.msg_control = space;
  message.msg_controllen = sizeof space;
  const ssize_t got = recvmsg(socket, &message, flags | MSG_CMSG_CLOEXEC);
  if (got < 0) return got;
  const cmsghdr* const control = CMSG_FIRSTHDR(&message);
  if (control != nullptr && control->cmsg_level == SOL_SOCKET && control->cmsg_type == SCM_RIGHTS &&
      control->cmsg_len == CMSG_LEN(sizeof descriptor)) {
    std::memcpy(&descriptor, CMSG_DATA(control), sizeof descriptor);
  }
  return got;
}

bool SendMessage(int socket, MessageKind kind, const Bytes& body, int descriptor) {
  MessageHeader header;
  header.kind = kind;
  header.body_bytes = body.size();
  // A header is far smaller than what a socket holds, so that it goes in one piece.
  ssize_t sent = -1;
  do {
    sent = SendWithDescriptor(socket, &header, sizeof header, descriptor, 0);
  } while (sent < 0 && errno == EINTR);
  return sent == sizeof header && SendAll(socket, body.data(), body.size());
}

bool ReceiveMessage(int socket, Message& message, int& descriptor) {
  descriptor = -1;
  MessageHeader header;
  bool is_good = ReceiveAll(socket, reinterpret_cast<std::uint8_t*>(&header), sizeof header, descriptor) &&
                 header.mark == MessageHeader::kMark && header.body_bytes <= kMostBodyBytes;
  if (is_good) {
    message.kind = header.kind;
    message.body.resize(header.body_bytes);
    is_good = ReceiveAll(socket, message.body.data(), message.body.size(), descriptor);
  }
  if (is_good || descriptor < 0) return is_good;
  close(descriptor);
  descriptor = -1;
  return false;
}

}  // namespace ScEng
