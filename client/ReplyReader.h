// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "base/ByteBuffer.h"

namespace korval::client {

inline constexpr std::uint16_t kStatusSuccess = 0;
inline constexpr std::uint16_t kStatusError = 0xFFFF;
inline constexpr std::uint16_t kStatusNotProcessed = 9027;
inline constexpr std::uint16_t kStatusUnknownCommand = 22102;

/// What a status means, for a person.
std::string StatusText(std::uint16_t status);

/// Reads one reply frame: length, command code, status, data, checksum, in big-endian words. The data's
/// fields are read in order.
class ReplyReader {
 public:
  /// Raises LinkError when length or checksum do not hold.
  explicit ReplyReader(base::ByteBuffer frame);

  std::uint16_t Command() const { return frame_.Word(2); }
  std::uint16_t Status() const { return frame_.Word(4); }
  /// Raises LinkError for a reply to another command than `command`. The frame that refuses a command while
  /// another is in progress names command 115 whatever was sent, and passes.
  void RequireAnswerTo(std::uint16_t command) const;
  /// Raises ErrorReply for any status but success.
  void RequireSuccess();

  /// Bytes of data not read yet.
  std::size_t Remaining() const { return frame_.Length() - 2 - position_; }
  /// Each raises LinkError when the data end before the field.
  std::uint16_t Word();
  float Real();
  double Real8();
  /// In UTF-8.
  std::string String();

 private:
  base::ByteView Take(std::size_t count);
  std::uint64_t Unsigned(std::size_t bytes);

  base::ByteBuffer frame_;
  std::size_t position_ = 6;
};

}  // namespace korval::client
