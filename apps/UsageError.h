// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace korval::apps {

/// A command line that cannot be followed; the text is a sentence that says what is wrong with it.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace korval::apps
