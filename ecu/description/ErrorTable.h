// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "base/Failure.h"

namespace korval::ecu {

/// The texts of this library's error numbers. English ones are built in; those of a file take their place.
class ErrorTable {
 public:
  using Texts = std::map<std::int32_t, std::string>;

  /// Language of the texts taken from a file.
  void SetLanguage(const std::string& language) { language_ = language; }
  const std::string& Language() const { return language_; }
  /// In the place of those that were given before.
  void SetTexts(Texts texts) { texts_ = std::move(texts); }
  /// Whether texts of a file are in use.
  bool IsLoaded() const { return !texts_.empty(); }

  std::string Text(std::int32_t number) const;
  /// A failure whose description is the number's text and, behind a colon, what happened.
  base::Failure MakeFailure(std::int32_t number, const std::string& detail = {}) const;

 private:
  std::string language_ = "en";
  Texts texts_;
};

}  // namespace korval::ecu
