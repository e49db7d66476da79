// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "base/ErrorNumbers.h"

namespace korval::base {

/// The one exception type of the system: a number and a description (UTF-8) that a user can act on.
/// Numbers of the diagnostic-session library (1000 and above) pass through to the client unchanged.
class Failure : public std::runtime_error {
 public:
  Failure(std::int32_t number, const std::string& description)
      : std::runtime_error(description),
        number_(number),
        description_(std::make_shared<const std::string>(description)) {}
  explicit Failure(const std::string& description) : Failure(kOwnFailure, description) {}

  std::int32_t Number() const noexcept { return number_; }
  /// The whole text; what() ends at its first NUL, which a client's name may hold.
  const std::string& Description() const noexcept { return *description_; }

 private:
  std::int32_t number_;
  std::shared_ptr<const std::string> description_;  // shared: an exception's copy must not throw
};

/// Carries out one step of a closing that goes on to its end, whatever the step raises.
template <typename Step>
void IgnoreFailure(Step step) noexcept {
  try {
    step();
  } catch (const std::exception&) {
    return;
  }
}

}  // namespace korval::base
