// SPDX-License-Identifier: MIT
#include "tests/apps/asap3/FakeServer.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/ByteBuffer.h"

namespace korval::tests {

using base::ByteBuffer;

namespace {

constexpr std::chrono::seconds kDeadline{60};

}  // namespace

FakeServer::FakeServer(std::vector<std::string> answers)
    : answers_(std::move(answers)), listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener_, 1) != 0 ||
      ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no port on 127.0.0.1");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Serve(); });
}

FakeServer::~FakeServer() {
  End();
  ::close(listener_);
}

void FakeServer::End() {
  ::shutdown(listener_, SHUT_RDWR);  // ends an accept that still waits
  if (thread_.joinable()) thread_.join();
}

void FakeServer::Serve() {
  const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
  if (client < 0) return;
  for (std::size_t served = 0;; ++served) {
    const std::string request = Receive(client);
    if (request.empty()) break;
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(request);
    }
    came_.notify_all();
    if (served >= answers_.size()) break;
    const ByteBuffer answer = ByteBuffer::FromHex(answers_[served]);
    ::send(client, answer.View().data(), answer.Length(), MSG_NOSIGNAL);
  }
  ::close(client);
}

std::string FakeServer::Receive(int client) {
  ByteBuffer frame;
  while (frame.Length() < 2 || frame.Length() < frame.Word(0)) {
    std::array<std::uint8_t, 4096> piece{};
    const auto count = ::recv(client, piece.data(), piece.size(), 0);
    if (count <= 0) return frame.ToHex();
    frame.Append(base::ByteView(piece.data(), static_cast<std::size_t>(count)));
  }
  return frame.ToHex();
}

void FakeServer::WaitForRequests(std::size_t count) {
  std::unique_lock lock(mutex_);
  const bool have_come = came_.wait_for(lock, kDeadline, [&] { return requests_.size() >= count; });
  if (!have_come) throw std::runtime_error("the client sent only " + std::to_string(requests_.size()));
}

std::vector<std::string> FakeServer::Requests() {
  End();
  return requests_;
}

}  // namespace korval::tests
