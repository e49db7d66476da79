// SPDX-License-Identifier: MIT
#include "apps/ecu-sim/PtyLine.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include "base/Failure.h"

namespace korval::apps {
namespace {

[[noreturn]] void RaiseNoTerminal() {
  throw base::Failure("No pseudo terminal for the K-line: " + std::generic_category().message(errno));
}

int OpenNearEnd() {
  const int descriptor = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) RaiseNoTerminal();
  return descriptor;
}

std::string FarEndOf(int near) {
  std::array<char, 128> name{};
  if (::grantpt(near) != 0 || ::unlockpt(near) != 0 || ::ptsname_r(near, name.data(), name.size()) != 0) {
    RaiseNoTerminal();
  }
  return name.data();
}

// Raw from the start, so that nothing is echoed or changed before a tester sets its line up.
int OpenFarEnd(const std::string& device) {
  const int descriptor = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  termios line{};
  if (descriptor < 0 || ::tcgetattr(descriptor, &line) != 0) RaiseNoTerminal();
  ::cfmakeraw(&line);
  ::tcsetattr(descriptor, TCSANOW, &line);
  return descriptor;
}

}  // namespace

PtyLine::Descriptor::~Descriptor() { ::close(number_); }

PtyLine::PtyLine(std::string path, OnBytes on_bytes)
    : path_(std::move(path)),
      on_bytes_(std::move(on_bytes)),
      near_(OpenNearEnd()),
      device_(FarEndOf(near_.Number())),
      far_(OpenFarEnd(device_)),
      arrival_(near_.Number(), QSocketNotifier::Read) {
  Link(device_);
  QObject::connect(&arrival_, &QSocketNotifier::activated, &arrival_, [this] { Read(); });
}

PtyLine::~PtyLine() {
  std::error_code unlinked_by_somebody;
  if (std::filesystem::read_symlink(path_, unlinked_by_somebody) == device_) {
    std::filesystem::remove(path_, unlinked_by_somebody);
  }
}

void PtyLine::Link(const std::string& device) const {
  std::error_code failed;
  if (std::filesystem::is_symlink(path_, failed)) std::filesystem::remove(path_, failed);
  std::filesystem::create_symlink(device, path_, failed);
  if (failed) {
    throw base::Failure("K-line " + path_ + " cannot be linked: " + failed.message() +
                        "; choose a path that is free, in a folder that can be written");
  }
}

void PtyLine::Read() {
  std::array<std::uint8_t, 4096> chunk{};
  const auto count = ::read(near_.Number(), chunk.data(), chunk.size());
  if (count > 0) on_bytes_(base::ByteView(chunk.data(), static_cast<std::size_t>(count)));
}

void PtyLine::Write(base::ByteView bytes) {
  [[maybe_unused]] const auto written = ::write(near_.Number(), bytes.data(), bytes.size());
}

}  // namespace korval::apps
