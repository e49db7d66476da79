// SPDX-License-Identifier: MIT
#include "ecu/description/ItemEncoding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>

#include "base/AnsiText.h"
#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/description/BitField.h"
#include "ecu/description/RawRange.h"

namespace korval::ecu {
namespace {

using base::Variant;

constexpr double kSingleEpsilon = std::numeric_limits<float>::epsilon();
constexpr double kDoubleEpsilon = std::numeric_limits<double>::epsilon();

[[noreturn]] void Refuse(const ItemDescription& item, const std::string& why) {
  throw base::Failure(kValueRefused, item.name + ": " + why);
}

void SetBitsOf(const ItemDescription& item, std::uint64_t raw, base::ByteBuffer& message) {
  item.Place().Write(raw, message);
}

bool HasRawNumber(const ItemDescription& item) {
  return item.coding != Coding::kFloat && item.coding != Coding::kAscii && item.coding != Coding::kBytes;
}

// A number within the range of 64 bits as those bits; 2^63 and more do not fit into a signed conversion.
std::uint64_t RawBits(const ItemDescription& item, double raw) {
  if (item.coding == Coding::kSigned) {
    const double limit = std::ldexp(1.0, 63);
    const auto number =
        raw >= limit ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(raw);
    return static_cast<std::uint64_t>(number);
  }
  const double limit = std::ldexp(1.0, 64);
  const auto number =
      raw >= limit ? std::numeric_limits<std::uint64_t>::max() : static_cast<std::uint64_t>(raw);
  return item.coding == Coding::kBcd ? ToBcd(number) : number;
}

void EncodeFloat(const ItemDescription& item, double value, base::ByteBuffer& message, bool clamp) {
  const double largest = item.bits == 32 ? static_cast<double>(std::numeric_limits<float>::max())
                                         : std::numeric_limits<double>::max();
  if (clamp) value = std::clamp(value, -largest, largest);
  if (!(std::abs(value) <= largest)) Refuse(item, "too large for its float");
  if (item.bits == 64) return SetBitsOf(item, std::bit_cast<std::uint64_t>(value), message);
  SetBitsOf(item, std::bit_cast<std::uint32_t>(static_cast<float>(value)), message);
}

// What may lie between a number and the limit that it stands for, in steps: the number was rounded to its
// type, in which it has this epsilon, and the scale adds a little.
double NoiseOf(const ItemDescription& item, double value, double epsilon) {
  constexpr double kOfAStep = 1E-6;
  return kOfAStep + std::abs(value * item.denominator / item.numerator) * epsilon;
}

// The raw number of a value, rounded; checked before, so that none less than a step outside slips in.
double FittingRaw(const ItemDescription& item, double value, double epsilon) {
  const RawRange range = RawRange::Of(item);
  const double raw = item.RawOf(value);
  const double noise = NoiseOf(item, value, epsilon);
  const double rounded = std::round(raw);
  if (!(raw >= range.lowest - noise && raw <= range.highest + noise)) Refuse(item, "out of range");
  if (!(rounded >= range.lowest && rounded <= range.highest)) Refuse(item, "out of range");
  return rounded;
}

double NearestRaw(const ItemDescription& item, double value) {
  const RawRange range = RawRange::Of(item);
  return std::clamp(std::round(item.RawOf(value)), range.lowest, range.highest);
}

// `epsilon` is that of the value's type; none: what the item cannot hold becomes the nearest it can.
void EncodeNumber(const ItemDescription& item, double value, std::optional<double> epsilon,
                  base::ByteBuffer& message) {
  if (!std::isfinite(value)) Refuse(item, "no finite number");
  if (item.coding == Coding::kBoolean) return SetBitsOf(item, value != 0 ? 1 : 0, message);
  if (item.coding == Coding::kFloat) return EncodeFloat(item, item.RawOf(value), message, !epsilon);
  const double raw = epsilon ? FittingRaw(item, value, *epsilon) : NearestRaw(item, value);
  SetBitsOf(item, RawBits(item, raw), message);
}

// The raw number that a Text child names.
void EncodeNamed(const ItemDescription& item, std::int64_t raw, base::ByteBuffer& message) {
  const RawRange range = RawRange::Of(item);
  const auto number = static_cast<double>(raw);
  if (number < range.lowest || number > range.highest)
    Refuse(item, "its text names a value that it cannot hold");
  const auto bits = static_cast<std::uint64_t>(raw);
  SetBitsOf(item, item.coding == Coding::kBcd ? ToBcd(bits) : bits, message);
}

void EncodeBytes(const ItemDescription& item, base::ByteView bytes, std::uint8_t fill,
                 base::ByteBuffer& message) {
  const std::size_t length = item.bits / 8;
  if (bytes.size() > length) Refuse(item, "longer than " + std::to_string(length) + " bytes");
  for (std::size_t i = 0; i < length; ++i) {
    message.SetAt(item.FirstByte() + i, i < bytes.size() ? bytes[i] : fill);
  }
}

void EncodeHex(const ItemDescription& item, const std::string& hex, base::ByteBuffer& message) {
  base::ByteBuffer bytes;
  try {
    bytes = base::ByteBuffer::FromHex(hex);
  } catch (const base::Failure& failure) {
    Refuse(item, failure.Description());
  }
  if (bytes.Length() != item.bits / 8) Refuse(item, "takes " + std::to_string(item.bits / 8) + " bytes");
  EncodeBytes(item, bytes.View(), 0, message);
}

}  // namespace

void EncodeItem(const ItemDescription& item, const Variant& value, base::ByteBuffer& message) {
  const std::string* text = value.As<std::string>();
  if (text == nullptr && value.ToText().empty()) Refuse(item, "no value");
  if (item.coding == Coding::kAscii) {
    return EncodeBytes(item, base::AnsiFromUtf8(value.ToText()).View(), ' ', message);
  }
  if (item.coding == Coding::kBytes) return EncodeHex(item, value.ToText(), message);
  if (item.coding == Coding::kBoolean && text && (*text == "True" || *text == "False")) {
    return SetBitsOf(item, *text == "True" ? 1 : 0, message);
  }
  const auto number = value.ToDouble();
  if (!number) Refuse(item, "'" + value.ToText() + "' is no number");
  const bool single = value.TypeOf() == Variant::Type::kSingle;
  EncodeNumber(item, *number, single ? kSingleEpsilon : kDoubleEpsilon, message);
}

void EncodeText(const ItemDescription& item, const std::string& text, base::ByteBuffer& message) {
  for (const auto& named : item.texts) {
    if (named.text == text && HasRawNumber(item)) return EncodeNamed(item, named.raw, message);
  }
  EncodeItem(item, text, message);
}

void EncodeClamped(const ItemDescription& item, double value, base::ByteBuffer& message) {
  EncodeNumber(item, value, std::nullopt, message);
}

}  // namespace korval::ecu
