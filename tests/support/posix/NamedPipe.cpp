// SPDX-License-Identifier: MIT
#include "tests/support/NamedPipe.h"

#include <cerrno>
#include <system_error>

#include <sys/stat.h>

namespace korval::tests {

bool MakeNamedPipe(const std::string& path) {
  if (::mkfifo(path.c_str(), 0600) != 0) throw std::system_error(errno, std::generic_category(), path);
  return true;
}

}  // namespace korval::tests
