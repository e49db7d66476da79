// SPDX-License-Identifier: MIT
#include "LoopbackClient.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace korval::platform {

LoopbackClient::LoopbackClient(std::uint16_t port, int receive_buffer)
    : descriptor_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (receive_buffer > 0) {
    ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &receive_buffer, sizeof receive_buffer);
  }
  sockaddr_in server = {};
  server.sin_family = AF_INET;
  server.sin_port = htons(port);
  server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::connect(descriptor_, reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0) {
    throw std::system_error(errno, std::generic_category(), "connect");
  }
}

std::size_t LoopbackClient::Send(base::ByteView bytes) {
  const auto count = ::send(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  return count < 0 ? 0 : static_cast<std::size_t>(count);
}

void LoopbackClient::FinishSending() { ::shutdown(descriptor_, SHUT_WR); }

void LoopbackClient::Leave() {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
}

void LoopbackClient::Abort() {
  const linger reset{1, 0};
  ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  Leave();
}

const base::ByteBuffer& LoopbackClient::Received() {
  std::array<std::uint8_t, 65536> chunk{};
  while (true) {
    const auto count = ::recv(descriptor_, chunk.data(), chunk.size(), MSG_DONTWAIT);
    if (count > 0) {
      received_.Append(base::ByteView(chunk.data(), static_cast<std::size_t>(count)));
      continue;
    }
    dropped_ = dropped_ || count == 0 || errno == ECONNRESET;
    return received_;
  }
}

bool LoopbackClient::IsDropped() {
  Received();
  return dropped_;
}

std::uint16_t LoopbackClient::OwnPort() const {
  sockaddr_in own = {};
  socklen_t length = sizeof own;
  ::getsockname(descriptor_, reinterpret_cast<sockaddr*>(&own), &length);
  return ntohs(own.sin_port);
}

}  // namespace korval::platform
