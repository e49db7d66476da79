// SPDX-License-Identifier: MIT
#include "PseudoTerminal.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace korval::platform {

PseudoTerminal::PseudoTerminal() : descriptor_(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
  std::array<char, 128> name{};
  if (descriptor_ < 0 || ::grantpt(descriptor_) != 0 || ::unlockpt(descriptor_) != 0 ||
      ::ptsname_r(descriptor_, name.data(), name.size()) != 0) {
    throw std::system_error(errno, std::generic_category(), "pseudo terminal");
  }
  device_ = name.data();
}

void PseudoTerminal::Send(base::ByteView bytes) {
  if (::write(descriptor_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
    throw std::system_error(errno, std::generic_category(), "write to the pseudo terminal");
  }
}

const base::ByteBuffer& PseudoTerminal::Received() {
  std::array<std::uint8_t, 4096> chunk{};
  while (true) {
    const auto count = ::read(descriptor_, chunk.data(), chunk.size());
    if (count <= 0) return received_;
    received_.Append(base::ByteView(chunk.data(), static_cast<std::size_t>(count)));
  }
}

termios PseudoTerminal::Settings() const {
  termios settings = {};
  ::tcgetattr(descriptor_, &settings);
  return settings;
}

void PseudoTerminal::Unplug() {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
}

}  // namespace korval::platform
