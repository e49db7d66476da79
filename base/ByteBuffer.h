// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korval::base {

/// A run of bytes that somebody else owns.
using ByteView = std::span<const std::uint8_t>;

/// A growable byte array: the frame buffer of both transports, the reply data of a command, and the
/// request and answer buffers of the diagnostic link. Offsets count from 0. An access outside the
/// buffer raises Failure; multi-byte values are big-endian.
class ByteBuffer {
 public:
  ByteBuffer() = default;
  ByteBuffer(std::initializer_list<std::uint8_t> bytes) : bytes_(bytes) {}
  explicit ByteBuffer(ByteView bytes) : bytes_(bytes.begin(), bytes.end()) {}

  /// Reads two hexadecimal digits a byte, either case, without separators.
  /// Raises Failure for an odd number of digits or any other character.
  static ByteBuffer FromHex(std::string_view hex);
  /// Two upper-case hexadecimal digits a byte, without separators.
  std::string ToHex() const;

  std::size_t Length() const noexcept { return bytes_.size(); }
  bool Empty() const noexcept { return bytes_.empty(); }
  /// Cuts the buffer, or grows it with zero bytes.
  void SetLength(std::size_t length) { bytes_.resize(length); }
  void Reserve(std::size_t length) { bytes_.reserve(length); }
  void Clear() noexcept { bytes_.clear(); }

  std::uint8_t At(std::size_t offset) const;
  void SetAt(std::size_t offset, std::uint8_t value);
  /// The 16-bit big-endian word at `offset`.
  std::uint16_t Word(std::size_t offset) const;
  void SetWord(std::size_t offset, std::uint16_t value);
  /// `count` (1 to 64) bits from `first_bit`, where bit 0 is the most significant bit of byte 0.
  std::uint64_t Bits(std::size_t first_bit, std::size_t count) const;
  void SetBits(std::size_t first_bit, std::size_t count, std::uint64_t value);

  /// Valid until the buffer is next changed.
  ByteView View() const noexcept { return bytes_; }
  ByteView View(std::size_t offset, std::size_t count) const;
  std::uint8_t* Data() noexcept { return bytes_.data(); }

  void Append(std::uint8_t byte) { bytes_.push_back(byte); }
  void Append(ByteView bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
  /// Inserts `bytes` before `offset`, which may be the length.
  void Insert(std::size_t offset, ByteView bytes);

  friend bool operator==(const ByteBuffer&, const ByteBuffer&) = default;

 private:
  void RequireInside(std::size_t offset, std::size_t count) const;

  std::vector<std::uint8_t> bytes_;
};

/// Two upper-case hexadecimal digits a byte, without separators.
std::string HexText(ByteView bytes);

}  // namespace korval::base
