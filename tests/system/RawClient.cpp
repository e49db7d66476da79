// SPDX-License-Identifier: MIT
#include "tests/system/RawClient.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include <arpa/inet.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "tests/system/Frames.h"

namespace korval::tests {
namespace {

constexpr std::chrono::seconds kDeadline{60};

[[noreturn]] void Fail(const std::string& what) {
  throw std::runtime_error("client: " + what + ": " + std::strerror(errno));
}

sockaddr_in Address(const char* host, int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  inet_pton(AF_INET, host, &address.sin_addr);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

}  // namespace

RawClient::RawClient(const char* own_address, int port, const char* server_address)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const timeval deadline{kDeadline.count(), 0};
  setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &deadline, sizeof deadline);
  setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &deadline, sizeof deadline);
  // Without it a frame after an unanswered one would wait for the delayed acknowledgement.
  const int at_once = 1;
  setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
  const sockaddr_in own = Address(own_address, 0);
  const sockaddr_in server = Address(server_address, port);
  if (bind(socket_, reinterpret_cast<const sockaddr*>(&own), sizeof own) == 0 &&
      connect(socket_, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0)
    return;
  const int error = errno;
  ::close(socket_);
  errno = error;
  Fail("no connection to port " + std::to_string(port));
}

RawClient::~RawClient() { Close(); }

void RawClient::EndSending() const { shutdown(socket_, SHUT_WR); }

void RawClient::Close() {
  if (socket_ >= 0) ::close(socket_);
  socket_ = -1;
}

void RawClient::Abort() {
  const linger reset{1, 0};
  setsockopt(socket_, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  Close();
}

void RawClient::Send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) Fail("nothing sent");
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

bool RawClient::SendPaced(std::string_view bytes) const {
  constexpr std::size_t kSegment = 1448;
  constexpr std::chrono::microseconds kOnTheWire{1230};  // of 1538 bytes, with all that is around a segment
  constexpr std::chrono::milliseconds kHeldUp{10};
  using Clock = std::chrono::steady_clock;
  bool is_paced = true;
  for (Clock::time_point last = Clock::now(); !bytes.empty();
       std::this_thread::sleep_until(last + kOnTheWire)) {
    is_paced = is_paced && Clock::now() - last < kHeldUp;
    last = Clock::now();
    Send(bytes.substr(0, kSegment));
    bytes.remove_prefix(std::min(kSegment, bytes.size()));
  }
  return is_paced;
}

void RawClient::SendToStoppedServer(std::string_view bytes) const {
  Send(bytes);
  const auto end = std::chrono::steady_clock::now() + kDeadline;
  for (int waiting = 1; waiting != 0; std::this_thread::yield())
    if (ioctl(socket_, SIOCOUTQNSD, &waiting) != 0 || std::chrono::steady_clock::now() > end)
      Fail("the bytes are not delivered");
}

std::string RawClient::ReceiveBytes(std::size_t count) const {
  std::string bytes(count, '\0');
  for (std::size_t held = 0; held < count;) {
    const ssize_t received = recv(socket_, bytes.data() + held, count - held, 0);
    if (received < 0) Fail("no answer");
    if (received == 0) throw std::runtime_error("client: the server closed the connection");
    held += static_cast<std::size_t>(received);
  }
  return bytes;
}

std::string RawClient::Receive() const {
  const std::string length = ReceiveBytes(2);
  if (WordAt(length, 0) < 8)
    throw std::runtime_error("client: an answer of impossible length " + Hex(length));
  return length + ReceiveBytes(WordAt(length, 0) - 2U);
}

std::string RawClient::Ask(std::string_view request) const {
  Send(request);
  return Receive();
}

std::string RawClient::AskUntilFree(std::string_view request) const {
  const auto end = std::chrono::steady_clock::now() + kDeadline;
  std::string answer = Ask(request);
  while (answer == kGlobalError && std::chrono::steady_clock::now() < end) answer = Ask(request);
  return answer;
}

bool RawClient::EndedByServer() const {
  char byte = 0;
  const ssize_t received = recv(socket_, &byte, 1, 0);
  if (received < 0 && errno != ECONNRESET) Fail("the connection does not end");
  return received <= 0;
}

int RawClient::LocalPort() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) != 0) Fail("no local port");
  return ntohs(address.sin_port);
}

}  // namespace korval::tests
