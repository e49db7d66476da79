// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>

#include "base/ByteBuffer.h"
#include "ecu/kline/KLineFrame.h"

namespace korval::ecu {

/// Reads the frames of ISO 14230-2 byte by byte, of all four header forms. It knows no time: the silence
/// that ends a truncated frame is somebody else's to see.
class FrameReader {
 public:
  enum class Result { kIncomplete, kFrame, kMalformed };

  /// The byte behind a frame or a malformed one begins the next.
  Result Add(std::uint8_t byte);
  /// Forgets a frame that has begun.
  void Reset();
  /// A frame has begun and is not complete.
  bool IsInside() const { return length_ != 0 && !complete_; }

  /// Of the last frame, until the next byte. Addresses are 0 without HasAddresses.
  bool HasAddresses() const { return form_.addresses; }
  std::uint8_t Target() const { return form_.addresses ? bytes_[1] : 0; }
  std::uint8_t Source() const { return form_.addresses ? bytes_[2] : 0; }
  HeaderForm Form() const { return form_; }
  base::ByteView Message() const { return {bytes_.data() + HeaderLength(), message_length_}; }
  /// Of the last malformed one, as in "wrong checksum".
  const char* Reason() const { return reason_; }

 private:
  static constexpr std::size_t kLongestFrame = 4 + kLongestKLineMessage + 1;

  std::size_t HeaderLength() const {
    return 1U + (form_.addresses ? 2U : 0U) + (form_.length_byte ? 1U : 0U);
  }
  Result ReadFormat(std::uint8_t format);
  Result Refuse(const char* reason);

  std::array<std::uint8_t, kLongestFrame> bytes_{};
  std::size_t length_ = 0;
  bool complete_ = false;
  HeaderForm form_;
  std::size_t message_length_ = 0;  // 0: not known yet
  std::uint8_t sum_ = 0;
  const char* reason_ = "";
};

}  // namespace korval::ecu
