// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/Failure.h"

namespace korval::protocol {

/// Reads one field of a command, and names the command and the field when the request ends before it.
template <typename Reader>
auto ReadNamedField(const std::string& command, const std::string& field, const std::string& type,
                    Reader read) {
  try {
    return read();
  } catch (const base::Failure&) {
    throw base::Failure(command + " : Invalid '" + field + "' parameter, " + type + " expected");
  }
}

}  // namespace korval::protocol
