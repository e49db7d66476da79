// SPDX-License-Identifier: MIT
#include "ecu/dbc/DbcTokens.h"

#include <algorithm>
#include <charconv>

#include "base/AnsiText.h"
#include "base/ByteBuffer.h"
#include "base/NumberText.h"

namespace korval::ecu {
namespace {

constexpr std::size_t kMostDigits = 18;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsOfWord(char c) { return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsOfInteger(char c) { return IsDigit(c) || c == '-'; }
bool IsOfNumber(char c) { return IsOfInteger(c) || c == '+' || c == '.' || c == 'e' || c == 'E'; }

std::string TextOf(std::string_view ansi) {
  return base::Utf8FromAnsi(base::ByteView(reinterpret_cast<const std::uint8_t*>(ansi.data()), ansi.size()));
}

}  // namespace

void DbcTokens::SkipBlanks() {
  rest_.remove_prefix(
      static_cast<std::size_t>(std::find_if_not(rest_.begin(), rest_.end(), IsBlank) - rest_.begin()));
}

std::string_view DbcTokens::TakeWhile(bool (*belongs)(char)) {
  SkipBlanks();
  const auto end = std::find_if_not(rest_.begin(), rest_.end(), belongs);
  const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
  rest_.remove_prefix(taken.size());
  return taken;
}

std::string_view DbcTokens::Word() { return TakeWhile(IsOfWord); }

std::optional<double> DbcTokens::Number() { return base::ReadNumber(TakeWhile(IsOfNumber)); }

std::optional<std::int64_t> DbcTokens::Integer() {
  const std::string_view digits = TakeWhile(IsOfInteger);
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (digits.empty() || digits.size() > kMostDigits || error != std::errc{} ||
      end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return value;
}

std::optional<std::string> DbcTokens::Quoted() {
  SkipBlanks();
  if (rest_.empty() || rest_.front() != '"') return std::nullopt;
  const std::size_t end = rest_.find('"', 1);
  if (end == std::string_view::npos) return std::nullopt;
  std::string text = TextOf(rest_.substr(1, end - 1));
  rest_.remove_prefix(end + 1);
  return text;
}

char DbcTokens::Peek() {
  SkipBlanks();
  return rest_.empty() ? '\0' : rest_.front();
}

bool DbcTokens::Take(char character) {
  if (Peek() != character || rest_.empty()) return false;
  rest_.remove_prefix(1);
  return true;
}

}  // namespace korval::ecu
