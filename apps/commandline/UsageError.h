// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>

namespace korval::apps {

/// A command line that cannot be followed; the text is a sentence that says what is wrong with it.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An option that the program does not have.
class UnknownOption : public UsageError {
 public:
  explicit UnknownOption(const std::string& name)
      : UsageError("unknown option '" + name + "'"), name_(name) {}

  /// As it was given, with its dashes.
  const std::string& Name() const { return name_; }

 private:
  std::string name_;
};

}  // namespace korval::apps
