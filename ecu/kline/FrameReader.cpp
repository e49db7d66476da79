// SPDX-License-Identifier: MIT
#include "ecu/kline/FrameReader.h"

namespace korval::ecu {
namespace {

// The two most significant bits of the format byte: which addresses follow.
constexpr unsigned kAddressMode = 0xC0;
constexpr unsigned kNoAddresses = 0x00;
constexpr unsigned kFunctionalAddresses = 0xC0;
constexpr unsigned kOtherStandard = 0x40;  // exception mode
constexpr unsigned kLengthMask = 0x3F;

}  // namespace

void FrameReader::Reset() {
  length_ = 0;
  complete_ = false;
}

FrameReader::Result FrameReader::Refuse(const char* reason) {
  reason_ = reason;
  complete_ = true;
  return Result::kMalformed;
}

FrameReader::Result FrameReader::ReadFormat(std::uint8_t format) {
  const unsigned mode = format & kAddressMode;
  if (mode == kOtherStandard) return Refuse("a format byte of another standard");
  message_length_ = format & kLengthMask;
  form_ = {mode != kNoAddresses, message_length_ == 0, mode == kFunctionalAddresses};
  return Result::kIncomplete;
}

FrameReader::Result FrameReader::Add(std::uint8_t byte) {
  if (complete_) Reset();
  if (length_ == 0) sum_ = 0;
  const std::size_t place = length_++;
  bytes_[place] = byte;
  if (place == 0) {
    sum_ = byte;
    return ReadFormat(byte);
  }
  const std::size_t header = HeaderLength();
  const bool is_checksum = place >= header && place == header + message_length_;
  if (!is_checksum) {
    sum_ = static_cast<std::uint8_t>(sum_ + byte);
    if (!form_.length_byte || place + 1 != header) return Result::kIncomplete;
    message_length_ = byte;
    return byte == 0 ? Refuse("a length of 0") : Result::kIncomplete;
  }
  if (byte != sum_) return Refuse("a wrong checksum");
  complete_ = true;
  return Result::kFrame;
}

}  // namespace korval::ecu
