// SPDX-License-Identifier: MIT
#include "tests/system/SerialLine.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include "tests/system/Frames.h"

namespace korval::tests {
namespace {

constexpr int kDeadlineMs = 20000;

[[noreturn]] void Fail(const std::string& what) { throw std::runtime_error("serial line: " + what); }

}  // namespace

SerialLine::SerialLine() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)), slave_(-1) {
  std::array<char, 128> name{};
  if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
      ::ptsname_r(master_, name.data(), name.size()) != 0) {
    Fail("no pseudo terminal");
  }
  device_ = name.data();
  slave_ = ::open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  termios line{};
  ::tcgetattr(slave_, &line);
  ::cfmakeraw(&line);
  ::tcsetattr(slave_, TCSANOW, &line);
}

SerialLine::~SerialLine() {
  Unplug();
  ::close(slave_);
}

void SerialLine::Unplug() {
  if (master_ >= 0) ::close(master_);
  master_ = -1;
}

void SerialLine::Send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = ::write(master_, bytes.data(), bytes.size());
    if (written <= 0) Fail("nothing can be sent");
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void SerialLine::WaitUntilTaken() const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kDeadlineMs);
  int waiting = 1;
  while (waiting > 0) {
    if (::ioctl(slave_, FIONREAD, &waiting) != 0) Fail("the device cannot be asked");
    if (std::chrono::steady_clock::now() > deadline) Fail("the server does not read");
    std::this_thread::yield();
  }
}

std::string SerialLine::ReceiveBytes(std::size_t count) const {
  std::string bytes;
  while (bytes.size() < count) {
    pollfd waited{master_, POLLIN, 0};
    if (::poll(&waited, 1, kDeadlineMs) != 1) Fail("no answer, only " + Hex(bytes));
    std::array<char, 4096> piece{};
    const ssize_t received = ::read(master_, piece.data(), std::min(piece.size(), count - bytes.size()));
    if (received <= 0) Fail("the server's end is closed");
    bytes.append(piece.data(), static_cast<std::size_t>(received));
  }
  return bytes;
}

std::string SerialLine::Receive() const {
  const std::string length = ReceiveBytes(2);
  return length + ReceiveBytes(WordAt(length, 0) - std::size_t{2});
}

std::string SerialLine::Ask(std::string_view request) const {
  Send(request);
  return Receive();
}

bool SerialLine::HasInput() const {
  pollfd waited{master_, POLLIN, 0};
  return ::poll(&waited, 1, 0) == 1 && (waited.revents & POLLIN) != 0;
}

}  // namespace korval::tests
