// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korval::ecu {

/// The tokens of one DBC statement, read from the front. What is not there is not taken.
class DbcTokens {
 public:
  explicit DbcTokens(std::string_view statement) : rest_(statement) {}

  /// Letters, digits and underscores; empty when there are none.
  std::string_view Word();
  std::optional<double> Number();
  /// A whole number of at most 18 digits.
  std::optional<std::int64_t> Integer();
  /// Text in quotes, as UTF-8.
  std::optional<std::string> Quoted();
  /// Takes that character when it comes next.
  bool Take(char character);
  char Peek();

 private:
  void SkipBlanks();
  std::string_view TakeWhile(bool (*belongs)(char));

  std::string_view rest_;
};

}  // namespace korval::ecu
