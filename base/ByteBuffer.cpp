// SPDX-License-Identifier: MIT
#include "base/ByteBuffer.h"

#include <algorithm>
#include <iterator>

#include "base/Failure.h"

namespace korval::base {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

std::string HexText(ByteView bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0x0F]);
  }
  return text;
}

ByteBuffer ByteBuffer::FromHex(std::string_view hex) {
  if (hex.size() % 2 != 0) throw Failure("hexadecimal text has an odd number of digits");
  ByteBuffer buffer;
  buffer.Reserve(hex.size() / 2);
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    const int high = HexDigit(hex[i]);
    const int low = HexDigit(hex[i + 1]);
    if (high < 0 || low < 0) throw Failure("hexadecimal text has a character that is no hexadecimal digit");
    buffer.Append(static_cast<std::uint8_t>(high * 16 + low));
  }
  return buffer;
}

std::string ByteBuffer::ToHex() const { return HexText(bytes_); }

void ByteBuffer::RequireInside(std::size_t offset, std::size_t count) const {
  if (offset > bytes_.size() || count > bytes_.size() - offset) {
    throw Failure("access to " + std::to_string(count) + " bytes at offset " + std::to_string(offset) +
                  " of a buffer of " + std::to_string(bytes_.size()) + " bytes");
  }
}

std::uint8_t ByteBuffer::At(std::size_t offset) const {
  RequireInside(offset, 1);
  return bytes_[offset];
}

void ByteBuffer::SetAt(std::size_t offset, std::uint8_t value) {
  RequireInside(offset, 1);
  bytes_[offset] = value;
}

std::uint16_t ByteBuffer::Word(std::size_t offset) const {
  RequireInside(offset, 2);
  return static_cast<std::uint16_t>((bytes_[offset] << 8) | bytes_[offset + 1]);
}

void ByteBuffer::SetWord(std::size_t offset, std::uint16_t value) {
  RequireInside(offset, 2);
  bytes_[offset] = static_cast<std::uint8_t>(value >> 8);
  bytes_[offset + 1] = static_cast<std::uint8_t>(value & 0xFF);
}

std::uint64_t ByteBuffer::Bits(std::size_t first_bit, std::size_t count) const {
  if (count == 0 || count > 64) throw Failure("a bit field has 1 to 64 bits, not " + std::to_string(count));
  RequireInside(first_bit / 8, (first_bit % 8 + count + 7) / 8);
  std::uint64_t value = 0;
  std::size_t bit = first_bit;
  std::size_t left = count;
  while (left > 0) {
    const std::size_t in_byte = std::min(left, 8 - bit % 8);
    const unsigned shifted = static_cast<unsigned>(bytes_[bit / 8]) >> (8 - bit % 8 - in_byte);
    value = (value << in_byte) | (shifted & ((1U << in_byte) - 1U));
    bit += in_byte;
    left -= in_byte;
  }
  return value;
}

void ByteBuffer::SetBits(std::size_t first_bit, std::size_t count, std::uint64_t value) {
  if (count == 0 || count > 64) throw Failure("a bit field has 1 to 64 bits, not " + std::to_string(count));
  RequireInside(first_bit / 8, (first_bit % 8 + count + 7) / 8);
  std::size_t bit = first_bit;
  std::size_t left = count;
  while (left > 0) {
    const std::size_t in_byte = std::min(left, 8 - bit % 8);
    const std::size_t shift = 8 - bit % 8 - in_byte;
    const unsigned mask = (1U << in_byte) - 1U;
    const unsigned piece = static_cast<unsigned>(value >> (left - in_byte)) & mask;
    std::uint8_t& byte = bytes_[bit / 8];
    byte = static_cast<std::uint8_t>((byte & ~(mask << shift)) | (piece << shift));
    bit += in_byte;
    left -= in_byte;
  }
}

ByteView ByteBuffer::View(std::size_t offset, std::size_t count) const {
  RequireInside(offset, count);
  return ByteView(bytes_).subspan(offset, count);
}

void ByteBuffer::Insert(std::size_t offset, ByteView bytes) {
  RequireInside(offset, 0);
  bytes_.insert(std::next(bytes_.begin(), static_cast<std::ptrdiff_t>(offset)), bytes.begin(), bytes.end());
}

}  // namespace korval::base
