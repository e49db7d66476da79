// SPDX-License-Identifier: MIT
#include "tests/system/FreePort.h"

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <thread>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/system/RawClient.h"

namespace korval::tests {
namespace {

constexpr std::chrono::seconds kDeadline{60};

bool Listens(int port) {
  try {
    const RawClient probe(port);
    return true;
  } catch (const std::runtime_error&) {
    return false;
  }
}

bool CanListen(int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const bool bound = bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(socket);
  return bound;
}

}  // namespace

// A port that the system hands out by itself may be handed out again before it is used.
int FreePort() {
  constexpr int kFirst = 20000;
  constexpr int kCount = 10000;
  static int next = static_cast<int>(getpid()) * 7;
  for (int tried = 0; tried < kCount; ++tried) {
    const int port = kFirst + next++ % kCount;
    if (CanListen(port)) return port;
  }
  throw std::runtime_error("no free port from 20000 to 29999");
}

void WaitUntil(const std::function<bool()>& done) {
  const auto end = std::chrono::steady_clock::now() + kDeadline;
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("what was waited for did not come");
    std::this_thread::yield();
  }
}

void WaitForListener(int port) {
  WaitUntil([port] { return Listens(port); });
}

}  // namespace korval::tests
