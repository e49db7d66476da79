// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "base/Failure.h"

namespace korval::ecu {

/// The texts of this library's error numbers. English ones are built in; an error file
///   <errors><error number="2000"><text lang="en">...</text></error>...</errors>
/// takes their place where it has a text.
class ErrorTable {
 public:
  /// Language of the texts taken from the file.
  void SetLanguage(const std::string& language) { language_ = language; }
  /// Keeps the built-in texts when the file cannot be read. Gives a sentence when it is there and damaged,
  /// else
  /// "".
  std::string Load(const std::string& path);
  /// Whether texts of a file are in use.
  bool IsLoaded() const { return !texts_.empty(); }

  std::string Text(std::int32_t number) const;
  /// A failure whose description is the number's text and, behind a colon, what happened.
  base::Failure MakeFailure(std::int32_t number, const std::string& detail = {}) const;

 private:
  std::string language_ = "en";
  std::map<std::int32_t, std::string> texts_;
};

}  // namespace korval::ecu
