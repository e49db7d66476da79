// SPDX-License-Identifier: MIT
#include "ecu/description/ItemCoding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "base/AnsiText.h"
#include "base/Failure.h"
#include "ecu/description/ErrorNumbers.h"

namespace korval::ecu {
namespace {

using base::Variant;

constexpr double kSingleEpsilon = std::numeric_limits<float>::epsilon();
constexpr double kDoubleEpsilon = std::numeric_limits<double>::epsilon();

[[noreturn]] void Refuse(const ItemDescription& item, const std::string& why) {
  throw base::Failure(kValueRefused, item.name + ": " + why);
}

// The item's bits, most significant first. The message is long enough.
std::uint64_t BigEndianBits(const ItemDescription& item, base::ByteView message) {
  const std::size_t end = item.BytesNeeded();
  std::size_t byte = item.FirstByte();
  std::uint64_t raw = message[byte] & (0xFFU >> (item.first_bit % 8));
  while (++byte < end - 1) raw = (raw << 8) | message[byte];
  const std::size_t unused = end * 8 - item.first_bit - item.bits;
  if (byte < end) return (raw << (8 - unused)) | (static_cast<unsigned>(message[byte]) >> unused);
  return raw >> unused;
}

std::uint64_t LowBits(std::size_t count) { return ~std::uint64_t{0} >> (64 - count); }

std::uint64_t LittleEndianBits(const ItemDescription& item, base::ByteView message) {
  std::size_t byte = item.FirstByte();
  const std::size_t shift = item.first_bit % 8;
  std::uint64_t raw = static_cast<std::uint64_t>(message[byte]) >> shift;
  for (std::size_t place = 8 - shift; place < item.bits; place += 8) {
    raw |= static_cast<std::uint64_t>(message[++byte]) << place;
  }
  return raw & LowBits(item.bits);
}

std::uint64_t BitsOf(const ItemDescription& item, base::ByteView message) {
  return item.little_endian ? LittleEndianBits(item, message) : BigEndianBits(item, message);
}

void SetLittleEndianBits(const ItemDescription& item, std::uint64_t raw, base::ByteBuffer& message) {
  for (std::size_t bit = 0; bit < item.bits; ++bit) {
    const std::size_t place = item.first_bit + bit;
    message.SetBits(place / 8 * 8 + 7 - place % 8, 1, (raw >> bit) & 1);
  }
}

void SetBitsOf(const ItemDescription& item, std::uint64_t raw, base::ByteBuffer& message) {
  if (item.little_endian) return SetLittleEndianBits(item, raw, message);
  message.SetBits(item.first_bit, item.bits, raw);
}

std::int64_t SignExtended(std::uint64_t raw, std::size_t bits) {
  const std::size_t unused = 64 - bits;
  return static_cast<std::int64_t>(raw << unused) >> unused;
}

std::optional<std::uint64_t> FromBcd(std::uint64_t raw) {
  std::uint64_t number = 0;
  for (int shift = 60; shift >= 0; shift -= 4) {
    const std::uint64_t digit = (raw >> shift) & 0xF;
    if (digit > 9) return std::nullopt;
    number = number * 10 + digit;
  }
  return number;
}

std::uint64_t ToBcd(std::uint64_t number) {
  std::uint64_t raw = 0;
  for (int shift = 0; number > 0 && shift < 64; shift += 4, number /= 10) raw |= (number % 10) << shift;
  return raw;
}

// An Int32 travels to clients as a single, so only what a single has is one.
template <typename Number>
Variant NumberValue(const ItemDescription& item, Number number) {
  const auto value = static_cast<double>(number);
  if (item.scaled) return item.ValueOf(value);
  using Int32 = std::numeric_limits<std::int32_t>;
  if (value < Int32::min() || value > Int32::max() || value != static_cast<float>(value)) return value;
  return static_cast<std::int32_t>(number);
}

Variant FloatValue(const ItemDescription& item, std::uint64_t raw) {
  if (item.bits == 32) {
    const auto single = std::bit_cast<float>(static_cast<std::uint32_t>(raw));
    if (!item.scaled) return single;
    return item.ValueOf(static_cast<double>(single));
  }
  const auto number = std::bit_cast<double>(raw);
  return item.scaled ? item.ValueOf(number) : number;
}

base::ByteView BytesOf(const ItemDescription& item, base::ByteView message) {
  return message.subspan(item.FirstByte(), item.bits / 8);
}

std::string AsciiText(base::ByteView bytes) {
  while (!bytes.empty() && (bytes.back() == 0 || bytes.back() == ' ')) bytes = bytes.first(bytes.size() - 1);
  return base::Utf8FromAnsi(bytes);
}

bool HoldsItem(const ItemDescription& item, base::ByteView message) {
  return item.BytesNeeded() <= message.size();
}

bool HasRawNumber(const ItemDescription& item) {
  return item.coding != Coding::kFloat && item.coding != Coding::kAscii && item.coding != Coding::kBytes;
}

// The raw number that Text children name; none for codings without one. The message holds the item.
std::optional<std::int64_t> RawNumber(const ItemDescription& item, base::ByteView message) {
  switch (item.coding) {
    case Coding::kUnsigned:
    case Coding::kBoolean:
      return static_cast<std::int64_t>(BitsOf(item, message));
    case Coding::kSigned:
      return SignExtended(BitsOf(item, message), item.bits);
    case Coding::kBcd:
      if (const auto number = FromBcd(BitsOf(item, message))) return static_cast<std::int64_t>(*number);
      return std::nullopt;
    case Coding::kFloat:
    case Coding::kAscii:
    case Coding::kBytes:
      break;
  }
  return std::nullopt;
}

struct Range {
  double lowest;
  double highest;
};

// What the bits of an integer coding hold. 2^63 and 2^64 stand for the numbers just below them.
Range RawRange(const ItemDescription& item) {
  const auto bits = static_cast<int>(item.bits);
  if (item.coding == Coding::kSigned) return {-std::ldexp(1.0, bits - 1), std::ldexp(1.0, bits - 1) - 1};
  if (item.coding == Coding::kBcd) {
    const double first_digit = std::min(9.0, std::ldexp(1.0, bits % 4) - 1);  // the one that is cut
    return {0, (first_digit + 1) * std::pow(10.0, bits / 4) - 1};
  }
  return {0, std::ldexp(1.0, bits) - 1};
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
  const Range range = RawRange(item);
  const double raw = item.RawOf(value);
  const double noise = NoiseOf(item, value, epsilon);
  const double rounded = std::round(raw);
  if (!(raw >= range.lowest - noise && raw <= range.highest + noise)) Refuse(item, "out of range");
  if (!(rounded >= range.lowest && rounded <= range.highest)) Refuse(item, "out of range");
  return rounded;
}

double NearestRaw(const ItemDescription& item, double value) {
  const Range range = RawRange(item);
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
  const Range range = RawRange(item);
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

Variant DecodeItem(const ItemDescription& item, base::ByteView message) {
  if (!HoldsItem(item, message)) return {};
  switch (item.coding) {
    case Coding::kUnsigned:
      return NumberValue(item, BitsOf(item, message));
    case Coding::kSigned:
      return NumberValue(item, SignExtended(BitsOf(item, message), item.bits));
    case Coding::kFloat:
      return FloatValue(item, BitsOf(item, message));
    case Coding::kBoolean:
      return BitsOf(item, message) != 0;
    case Coding::kBcd:
      if (const auto number = FromBcd(BitsOf(item, message))) return NumberValue(item, *number);
      return {};
    case Coding::kAscii:
      return AsciiText(BytesOf(item, message));
    case Coding::kBytes:
      return base::HexText(BytesOf(item, message));
  }
  return {};
}

std::optional<std::int64_t> DecodeRaw(const ItemDescription& item, base::ByteView message) {
  return HoldsItem(item, message) ? RawNumber(item, message) : std::nullopt;
}

std::string DecodeText(const ItemDescription& item, base::ByteView message) {
  if (!HoldsItem(item, message)) return {};
  if (!item.texts.empty()) {
    const auto raw = RawNumber(item, message);
    for (const auto& named : item.texts) {
      if (named.raw == raw) return named.text;
    }
  }
  return DecodeItem(item, message).ToText();
}

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

bool LosesDigitsAsSingle(const ItemDescription& item) {
  if (item.IsText() || item.coding == Coding::kBoolean) return false;
  if (item.coding == Coding::kFloat) return item.bits == 64;
  const Range range = RawRange(item);
  const auto largest = static_cast<float>(
      std::max(std::abs(item.ValueOf(range.lowest)), std::abs(item.ValueOf(range.highest))));
  return largest - std::nextafter(largest, 0.0F) > std::abs(item.numerator / item.denominator);
}

void EncodeClamped(const ItemDescription& item, double value, base::ByteBuffer& message) {
  EncodeNumber(item, value, std::nullopt, message);
}

}  // namespace korval::ecu
