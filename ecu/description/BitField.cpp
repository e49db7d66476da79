// SPDX-License-Identifier: MIT
#include "ecu/description/BitField.h"

namespace korval::ecu {
namespace {

std::uint64_t LowBits(std::size_t count) { return ~std::uint64_t{0} >> (64 - count); }

std::uint64_t ReadBigEndian(const BitField& field, base::ByteView message) {
  const std::size_t end = field.BytesNeeded();
  std::size_t byte = field.FirstByte();
  std::uint64_t raw = message[byte] & (0xFFU >> (field.first_bit % 8));
  while (++byte < end - 1) raw = (raw << 8) | message[byte];
  const std::size_t unused = end * 8 - field.first_bit - field.bits;
  if (byte < end) return (raw << (8 - unused)) | (static_cast<unsigned>(message[byte]) >> unused);
  return raw >> unused;
}

std::uint64_t ReadLittleEndian(const BitField& field, base::ByteView message) {
  std::size_t byte = field.FirstByte();
  const std::size_t shift = field.first_bit % 8;
  std::uint64_t raw = static_cast<std::uint64_t>(message[byte]) >> shift;
  for (std::size_t place = 8 - shift; place < field.bits; place += 8) {
    raw |= static_cast<std::uint64_t>(message[++byte]) << place;
  }
  return raw & LowBits(field.bits);
}

void WriteLittleEndian(const BitField& field, std::uint64_t raw, base::ByteBuffer& message) {
  for (std::size_t bit = 0; bit < field.bits; ++bit) {
    const std::size_t place = field.first_bit + bit;
    message.SetBits(place / 8 * 8 + 7 - place % 8, 1, (raw >> bit) & 1);
  }
}

}  // namespace

std::uint64_t BitField::Read(base::ByteView message) const {
  return little_endian ? ReadLittleEndian(*this, message) : ReadBigEndian(*this, message);
}

void BitField::Write(std::uint64_t raw, base::ByteBuffer& message) const {
  if (little_endian) return WriteLittleEndian(*this, raw, message);
  message.SetBits(first_bit, bits, raw);
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

}  // namespace korval::ecu
