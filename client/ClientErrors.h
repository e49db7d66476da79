// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "base/Failure.h"

namespace korval::client {

/// No connection, no answer in time, or an answer that is damaged or belongs to another command.
class LinkError : public base::Failure {
 public:
  using Failure::Failure;
};

/// The server answered with a status other than success. Number() is the code of the error record, or the
/// status itself when the answer holds none.
class ErrorReply : public base::Failure {
 public:
  ErrorReply(std::uint16_t status, std::int32_t code, const std::string& message)
      : Failure(code, message), status_(status) {}

  std::uint16_t Status() const { return status_; }

 private:
  std::uint16_t status_;
};

}  // namespace korval::client
