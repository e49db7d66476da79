// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace korval::ecu {

/// Up to seven names in a constant table.
using NameList = std::array<const char*, 7>;

constexpr std::span<const char* const> NamesIn(const NameList& list) {
  std::size_t count = 0;
  while (count < list.size() && list[count] != nullptr) ++count;
  return std::span(list).first(count);
}

/// What a file may say in an attribute.
struct Attribute {
  enum class Kind {
    kText,
    kInteger,     ///< decimal, `lowest` to `highest`
    kRaw,         ///< decimal, of 64 bits
    kNumber,      ///< decimal, with a point and an exponent where it likes
    kHex,         ///< hexadecimal digits without a prefix, `lowest` to `highest`
    kIdentifier,  ///< of CAN, hexadecimal; 8 digits mean 29 bit
    kBytes,       ///< `lowest` to `highest` bytes, two hexadecimal digits each, blanks allowed
    kChoice       ///< one of `choices`
  };

  const char* name = "";
  Kind kind = Kind::kText;
  std::int32_t lowest = 0;
  std::int32_t highest = 0;
  const char* unit = "";
  NameList choices{};
  /// What holds when it is absent or cannot be used: a number, or the place of a choice.
  std::optional<std::int32_t> fallback{};
  const char* symbol = "";  ///< that of a standard
  const char* word = "";    ///< a text that is no value of the kind and has a meaning, too
  bool required = false;    ///< without it, or empty, the element is of no use
  bool open = false;        ///< another text than the choices is no mistake that a schema refuses

  // These say more about an attribute, in the table.
  constexpr Attribute Required() const {
    Attribute changed = *this;
    changed.required = true;
    return changed;
  }
  constexpr Attribute Open() const {
    Attribute changed = *this;
    changed.open = true;
    return changed;
  }
  constexpr Attribute Or(const char* other) const {
    Attribute changed = *this;
    changed.word = other;
    return changed;
  }
  constexpr Attribute Symbol(const char* standard) const {
    Attribute changed = *this;
    changed.symbol = standard;
    return changed;
  }
};

/// An element, and what it may hold.
struct Element {
  /// How often it may stand in a file or its parent. Of several that serve but once, the first does; a file
  /// without one that is needed is refused.
  enum class Count { kAny, kOnce, kNeeded };

  const char* name = "";
  NameList parents{};
  Count count = Count::kAny;
  std::span<const Attribute> attributes{};

  /// The attribute of that name; a name that the table does not have does not compile.
  consteval const Attribute& operator[](std::string_view attribute) const {
    for (const Attribute& known : attributes) {
      if (known.name == attribute) return known;
    }
    throw "the grammar has no such attribute";
  }
};

namespace grammar {

constexpr Attribute Text(const char* name) { return {.name = name}; }

constexpr Attribute Integer(const char* name, std::optional<std::int32_t> fallback, std::int32_t lowest,
                            std::int32_t highest, const char* unit = "") {
  return {.name = name,
          .kind = Attribute::Kind::kInteger,
          .lowest = lowest,
          .highest = highest,
          .unit = unit,
          .fallback = fallback};
}

constexpr Attribute Raw(const char* name) { return {.name = name, .kind = Attribute::Kind::kRaw}; }

constexpr Attribute Number(const char* name, std::optional<std::int32_t> fallback) {
  return {.name = name, .kind = Attribute::Kind::kNumber, .fallback = fallback};
}

constexpr Attribute Hex(const char* name, std::optional<std::int32_t> fallback, std::int32_t lowest,
                        std::int32_t highest) {
  return {.name = name,
          .kind = Attribute::Kind::kHex,
          .lowest = lowest,
          .highest = highest,
          .fallback = fallback};
}

constexpr Attribute Identifier(const char* name) {
  return {.name = name, .kind = Attribute::Kind::kIdentifier};
}

constexpr Attribute Bytes(const char* name, std::int32_t lowest, std::int32_t highest) {
  return {.name = name, .kind = Attribute::Kind::kBytes, .lowest = lowest, .highest = highest};
}

/// `fallback` is a place in `choices`.
constexpr Attribute Choice(const char* name, const NameList& choices,
                           std::optional<std::int32_t> fallback = 0) {
  return {.name = name, .kind = Attribute::Kind::kChoice, .choices = choices, .fallback = fallback};
}

}  // namespace grammar
}  // namespace korval::ecu
