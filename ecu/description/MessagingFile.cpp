// SPDX-License-Identifier: MIT
#include "ecu/description/MessagingFile.h"

#include <algorithm>

namespace korval::ecu {

TransportDescription MessagingFile::TransportOf(const std::string& function) const {
  const auto found = std::find_if(diagnostics.begin(), diagnostics.end(), [&](const Diagnostic& diagnostic) {
    return diagnostic.function == function;
  });
  return found == diagnostics.end() ? TransportDescription() : found->transport;
}

}  // namespace korval::ecu
