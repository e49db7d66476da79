// SPDX-License-Identifier: MIT
#include "bench/Connection.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace korval::bench {
namespace {

[[noreturn]] void Fail(const char* what) {
  throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

}  // namespace

Connection::Connection(int port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const int on = 1;
  setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    Fail("no connection");
}

Connection::~Connection() { ::close(socket_); }

void Connection::Exchange(std::string_view request, std::string& reply) const {
  Send(request);
  Receive(reply.data(), reply.size());
}

void Connection::Send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) Fail("nothing sent");
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void Connection::Receive(char* bytes, std::size_t count) const {
  while (count > 0) {
    const ssize_t received = recv(socket_, bytes, count, 0);
    if (received <= 0) Fail("nothing received");
    bytes += received;
    count -= static_cast<std::size_t>(received);
  }
}

}  // namespace korval::bench
