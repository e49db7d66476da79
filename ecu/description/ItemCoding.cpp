// SPDX-License-Identifier: MIT
#include "ecu/description/ItemCoding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "base/AnsiText.h"
#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/description/BitField.h"
#include "ecu/description/RawRange.h"

namespace korval::ecu {
namespace {

using base::Variant;

std::uint64_t BitsOf(const ItemDescription& item, base::ByteView message) {
  return item.Place().Read(message);
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

bool HoldsItem(const ItemDescription& item, base::ByteView message) {
  return item.BytesNeeded() <= message.size();
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

}  // namespace

std::string AsciiText(base::ByteView bytes) {
  while (!bytes.empty() && (bytes.back() == 0 || bytes.back() == ' ')) bytes = bytes.first(bytes.size() - 1);
  return base::Utf8FromAnsi(bytes);
}

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

bool LosesDigitsAsSingle(const ItemDescription& item) {
  if (item.IsText() || item.coding == Coding::kBoolean) return false;
  if (item.coding == Coding::kFloat) return item.bits == 64;
  const RawRange range = RawRange::Of(item);
  const auto largest = static_cast<float>(
      std::max(std::abs(item.ValueOf(range.lowest)), std::abs(item.ValueOf(range.highest))));
  return largest - std::nextafter(largest, 0.0F) > std::abs(item.numerator / item.denominator);
}

}  // namespace korval::ecu
