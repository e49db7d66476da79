// SPDX-License-Identifier: MIT
#include "tests/ecu/ecufile/RuleText.h"

namespace korval::tests {
namespace {

using ecu::Attribute;

std::string HexText(std::int32_t number, std::size_t digits) {
  static constexpr const char* kDigits = "0123456789ABCDEF";
  std::string text;
  for (; text.size() < digits; number /= 16) text.insert(text.begin(), kDigits[number % 16]);
  return text;
}

std::string Span(const std::string& lowest, const std::string& highest) {
  return lowest == highest ? lowest : lowest + " to " + highest;
}

std::string ChoicesText(const Attribute& rule) {
  std::string list;
  for (const char* choice : ecu::NamesIn(rule.choices)) list.append(list.empty() ? "" : ", ").append(choice);
  return list;
}

}  // namespace

std::size_t HexDigits(std::int32_t highest) {
  std::size_t digits = 1;
  for (; highest > 15; highest /= 16) ++digits;
  return digits;
}

std::optional<std::string> DefaultText(const Attribute& rule) {
  if (rule.required) return "required";
  if (!rule.fallback) return std::nullopt;
  if (rule.kind == Attribute::Kind::kHex) return HexText(*rule.fallback, HexDigits(rule.highest));
  if (rule.kind == Attribute::Kind::kChoice) return rule.choices[static_cast<std::size_t>(*rule.fallback)];
  return std::to_string(*rule.fallback);
}

std::optional<std::string> RangeText(const Attribute& rule) {
  const std::string whole = Span(std::to_string(rule.lowest), std::to_string(rule.highest));
  switch (rule.kind) {
    case Attribute::Kind::kText:
      return std::nullopt;
    case Attribute::Kind::kInteger:
      return whole + (*rule.unit == '\0' ? "" : " ") + rule.unit;
    case Attribute::Kind::kRaw:
      return "any whole number of 64 bits";
    case Attribute::Kind::kNumber:
      return "any number";
    case Attribute::Kind::kHex: {
      const std::size_t digits = HexDigits(rule.highest);
      return "hex, " + Span(HexText(rule.lowest, digits), HexText(rule.highest, digits)) +
             (*rule.word == '\0' ? "" : ", or ") + rule.word;
    }
    case Attribute::Kind::kIdentifier:
      return "hex, up to 7FF; 8 digits mean 29 bit";
    case Attribute::Kind::kBytes:
      return "hex, " + whole + " bytes, blanks allowed";
    case Attribute::Kind::kChoice:
      return ChoicesText(rule);
  }
  return std::nullopt;
}

std::string Described(const Attribute& rule) {
  std::string text = RangeText(rule).value_or("");
  if (!rule.required) {
    if (const auto fallback = DefaultText(rule))
      text += (text.empty() ? "default " : "; default ") + *fallback;
  }
  return text.empty() ? text : text + ".";
}

}  // namespace korval::tests
