// SPDX-License-Identifier: MIT
#include "ecu/description/ItemPlan.h"

#include <cmath>

#include "base/NumberText.h"
#include "ecu/description/ItemCoding.h"
#include "ecu/description/RawRange.h"

namespace korval::ecu {
namespace {

constexpr std::size_t kWindowBytes = sizeof(std::uint64_t);

std::optional<float> Narrowed(double number) {
  const auto single = static_cast<float>(number);
  if (std::isinf(single) && !std::isinf(number)) return std::nullopt;
  return single;
}

std::optional<float> Narrowed(std::optional<double> number) {
  return number ? Narrowed(*number) : std::nullopt;
}

}  // namespace

ItemPlan::ItemPlan(const ItemDescription& item)
    : kind_(KindOf(item)), scaled_(item.scaled), field_(item.Place()) {
  if (scaled_) {
    numerator_ = item.numerator;
    denominator_ = item.denominator;
    offset_ = item.offset;
  }
  if (kind_ == Kind::kUnsigned || kind_ == Kind::kSigned) MakePlain(item);
}

ItemPlan::Kind ItemPlan::KindOf(const ItemDescription& item) {
  switch (item.coding) {
    case Coding::kUnsigned:
      return Kind::kUnsigned;
    case Coding::kSigned:
      return Kind::kSigned;
    case Coding::kFloat:
      return item.bits == 32 ? Kind::kFloat : Kind::kDouble;
    case Coding::kBoolean:
      return Kind::kBoolean;
    case Coding::kBcd:
      return Kind::kBcd;
    case Coding::kAscii:
      return Kind::kAscii;
    case Coding::kBytes:
      break;
  }
  return Kind::kBytes;
}

// The window ends with the item, so that an answer that holds the item holds the window, but for an item that
// begins the answer.
void ItemPlan::MakePlain(const ItemDescription& item) {
  const std::size_t end = item.BytesNeeded();
  const std::size_t window = end > kWindowBytes ? end - kWindowBytes : 0;
  const bool inside = item.first_bit >= window * 8;
  const auto single_at = [this](double raw) { return static_cast<float>(ValueOf(raw)); };
  const RawRange range = RawRange::Of(item);
  const bool singles = std::isfinite(single_at(range.lowest)) && std::isfinite(single_at(range.highest));
  if (item.little_endian || item.bits > 63 || !inside || !singles) return;
  window_ = static_cast<std::uint32_t>(window);
  shift_ = static_cast<std::uint8_t>((window + kWindowBytes) * 8 - item.first_bit - item.bits);
  mask_ = ~std::uint64_t{0} >> (64 - item.bits);
  if (kind_ == Kind::kSigned) sign_ = std::uint64_t{1} << (item.bits - 1);
  kind_ = Kind::kPlain;
}

std::optional<float> ItemPlan::Single(base::ByteView answer) const {
  if (answer.size() < field_.BytesNeeded()) return std::nullopt;
  switch (kind_) {
    case Kind::kPlain:
      if (answer.size() >= PlainLength()) return std::bit_cast<float>(SingleBits(answer.data()));
      return Scaled(static_cast<double>(static_cast<std::int64_t>((field_.Read(answer) ^ sign_) - sign_)));
    case Kind::kUnsigned:
      return Scaled(static_cast<double>(field_.Read(answer)));
    case Kind::kSigned:
      return Scaled(static_cast<double>(SignExtended(field_.Read(answer), field_.bits)));
    case Kind::kBoolean:
      return field_.Read(answer) != 0 ? -1.0F : 0.0F;
    case Kind::kBcd:
      if (const auto number = FromBcd(field_.Read(answer))) return Scaled(static_cast<double>(*number));
      return std::nullopt;
    case Kind::kFloat:
      return FloatOf(static_cast<std::uint32_t>(field_.Read(answer)));
    case Kind::kDouble: {
      const auto number = std::bit_cast<double>(field_.Read(answer));
      return scaled_ ? Scaled(number) : Narrowed(number);
    }
    case Kind::kAscii:
    case Kind::kBytes:
      break;
  }
  return TextOf(answer.subspan(field_.FirstByte(), field_.bits / 8));
}

std::optional<float> ItemPlan::Scaled(double raw) const { return Narrowed(ValueOf(raw)); }

std::optional<float> ItemPlan::FloatOf(std::uint32_t bits) const {
  const auto single = std::bit_cast<float>(bits);
  return scaled_ ? Scaled(static_cast<double>(single)) : single;
}

// A text may be a number, and hexadecimal digits may be decimal ones.
std::optional<float> ItemPlan::TextOf(base::ByteView bytes) const {
  return Narrowed(base::ReadNumber(kind_ == Kind::kAscii ? AsciiText(bytes) : base::HexText(bytes)));
}

}  // namespace korval::ecu
