// SPDX-License-Identifier: MIT
#include "base/NumberText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <system_error>

namespace korval::base {
namespace {

struct Decimal {
  std::string digits;  // no leading or trailing zeros, at least one digit
  int exponent;        // of the first digit: 12.5 is "125" with exponent 1
};

template <typename Number>
Decimal ShortestDecimal(Number magnitude) {
  std::array<char, 40> scientific{};
  const auto end =
      std::to_chars(scientific.begin(), scientific.end(), magnitude, std::chars_format::scientific).ptr;
  const std::string_view text(scientific.data(), static_cast<std::size_t>(end - scientific.data()));
  const std::size_t e = text.find('e');
  Decimal decimal{std::string(1, text[0]), 0};
  if (e > 2) decimal.digits += text.substr(2, e - 2);
  const char* exponent = text.data() + e + (text[e + 1] == '+' ? 2 : 1);
  std::from_chars(exponent, text.data() + text.size(), decimal.exponent);
  return decimal;
}

std::string Scientific(const Decimal& decimal) {
  std::string text(1, decimal.digits[0]);
  if (decimal.digits.size() > 1) text += "." + decimal.digits.substr(1);
  const int magnitude = std::abs(decimal.exponent);
  text += decimal.exponent < 0 ? "E-" : "E+";
  if (magnitude < 10) text += "0";
  return text + std::to_string(magnitude);
}

std::string Plain(const Decimal& decimal) {
  const auto count = static_cast<int>(decimal.digits.size());
  if (decimal.exponent < 0) {
    return "0." + std::string(static_cast<std::size_t>(-decimal.exponent - 1), '0') + decimal.digits;
  }
  const int whole = decimal.exponent + 1;
  if (whole >= count) return decimal.digits + std::string(static_cast<std::size_t>(whole - count), '0');
  const auto cut = static_cast<std::size_t>(whole);
  return decimal.digits.substr(0, cut) + "." + decimal.digits.substr(cut);
}

template <typename Number>
std::string NumberText(Number value, int scientific_from) {
  static constexpr int kPlainDownTo = -4;
  if (std::isnan(value)) return "NaN";
  const std::string sign = std::signbit(value) && value != 0 ? "-" : "";
  if (std::isinf(value)) return sign + "Infinity";
  if (value == 0) return "0";
  const Decimal decimal = ShortestDecimal(std::abs(value));
  const bool plain = decimal.exponent >= kPlainDownTo && decimal.exponent < scientific_from;
  return sign + (plain ? Plain(decimal) : Scientific(decimal));
}

std::string_view WithoutBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// std::from_chars knows no leading plus.
std::string_view WithoutPlus(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  return text;
}

}  // namespace

std::string SingleText(float value) { return NumberText(value, 7); }

std::string DoubleText(double value) { return NumberText(value, 15); }

std::optional<std::int32_t> ReadInteger(std::string_view text) {
  text = WithoutPlus(WithoutBlanks(text));
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> ReadNumber(std::string_view text) {
  text = WithoutPlus(WithoutBlanks(text));
  if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos)
    return std::nullopt;
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace korval::base
