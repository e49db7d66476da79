// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstdint>
#include <optional>

#include "base/ByteBuffer.h"
#include "ecu/description/BitField.h"
#include "ecu/description/ItemDescription.h"

namespace korval::ecu {

/// Where an item stands and how it is scaled, worked out once: its value in single precision, without the
/// tagged value that a command may need. Holds nothing of the description.
class ItemPlan {
 public:
  explicit ItemPlan(const ItemDescription& item);

  /// What DecodeItem(item, answer).ToSingle() gives, bit for bit.
  std::optional<float> Single(base::ByteView answer) const;

  /// Whether SingleBits can be used: a whole number of at most 63 bits in big byte order whose values all are
  /// singles.
  bool IsPlain() const { return kind_ == Kind::kPlain; }
  /// Length from which an answer can be given to SingleBits.
  std::size_t PlainLength() const { return window_ + sizeof(std::uint64_t); }
  /// The bits of Single, for a plain item. REQUIRES: the answer has PlainLength bytes and holds the item.
  std::uint32_t SingleBits(const std::uint8_t* answer) const {
    const std::uint64_t raw = (Window(answer + window_) >> shift_) & mask_;
    // Two's complement without a branch; the sign is 0 for an unsigned item.
    const auto number = static_cast<double>(static_cast<std::int64_t>((raw ^ sign_) - sign_));
    return std::bit_cast<std::uint32_t>(static_cast<float>(ValueOf(number)));
  }

  /// Length of the shortest answer that holds the item.
  std::size_t BytesNeeded() const { return field_.BytesNeeded(); }

 private:
  enum class Kind : std::uint8_t {
    kPlain,
    kUnsigned,
    kSigned,
    kBoolean,
    kBcd,
    kFloat,
    kDouble,
    kAscii,
    kBytes
  };

  static Kind KindOf(const ItemDescription& item);
  // Written out, so that compilers see the one instruction that it is.
  static std::uint64_t Window(const std::uint8_t* bytes) {
    const auto at = [bytes](unsigned i) { return std::uint64_t{bytes[i]} << (56 - 8 * i); };
    return at(0) | at(1) | at(2) | at(3) | at(4) | at(5) | at(6) | at(7);
  }

  double ValueOf(double raw) const { return raw * numerator_ / denominator_ + offset_; }
  std::optional<float> Scaled(double raw) const;
  std::optional<float> FloatOf(std::uint32_t bits) const;
  std::optional<float> TextOf(base::ByteView bytes) const;
  void MakePlain(const ItemDescription& item);

  // What SingleBits needs stands together.
  std::uint64_t mask_ = 0;
  std::uint64_t sign_ = 0;  // its bit, of a signed item
  double numerator_ = 1;
  double denominator_ = 1;
  double offset_ = 0;
  std::uint32_t window_ = 0;  // where the eight bytes begin that the bits are in
  std::uint8_t shift_ = 0;
  Kind kind_ = Kind::kUnsigned;
  bool scaled_ = false;
  BitField field_;
};

}  // namespace korval::ecu
