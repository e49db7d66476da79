// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ecu/description/BitField.h"

namespace korval::ecu {

/// The longest message that anybody sends to an ECU or gets from it: ISO 15765-2 without its escape.
inline constexpr std::int32_t kLongestMessage = 4095;

enum class Coding { kUnsigned, kSigned, kFloat, kBoolean, kAscii, kBytes, kBcd };

/// Where a data item stands in a message and what its bits mean.
struct ItemDescription {
  struct NamedValue {
    std::int64_t raw = 0;
    std::string text;

    friend bool operator==(const NamedValue&, const NamedValue&) = default;
  };

  // What decoding needs stands together: acquisition decodes a thousand items in a row.
  std::size_t first_bit = 0;  ///< as in BitField
  std::size_t bits = 8;
  Coding coding = Coding::kUnsigned;
  bool little_endian = false;
  bool scaled = false;  ///< Step or Offset is given: the value is a Double
  /// Step as a fraction, 0.01 as 1 / 100: the value is then the double nearest to what the file says.
  double numerator = 1;  ///< never 0
  double denominator = 1;
  double offset = 0;
  std::string name;
  std::string unit;
  std::vector<NamedValue> texts;

  friend bool operator==(const ItemDescription&, const ItemDescription&) = default;

  /// Not 0.
  void SetStep(double step);
  double ValueOf(double raw) const { return raw * numerator / denominator + offset; }
  double RawOf(double value) const { return (value - offset) * denominator / numerator; }

  BitField Place() const { return {first_bit, bits, little_endian}; }
  std::size_t FirstByte() const { return first_bit / 8; }
  bool IsText() const { return coding == Coding::kAscii || coding == Coding::kBytes; }
  /// Length of the shortest message that holds the item.
  std::size_t BytesNeeded() const { return Place().BytesNeeded(); }
  /// Whether the coding knows that many bits, at that place, and a message can have them.
  bool IsPossible() const;
};

}  // namespace korval::ecu
