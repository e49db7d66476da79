// SPDX-License-Identifier: MIT
#include "platform/process/StandardStreams.h"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace korval::platform {

void HoldStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) < 0 && errno == EBADF) {
      // The lowest free descriptor is this one. Opened the wrong way round, so that using it fails.
      static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

std::error_code WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {  // another program that has the same pipe open made it so
      pollfd writable{descriptor, POLLOUT, 0};
      static_cast<void>(::poll(&writable, 1, -1));
    } else if (errno != EINTR) {
      return {errno, std::generic_category()};
    }
  }
  return {};
}

}  // namespace korval::platform
