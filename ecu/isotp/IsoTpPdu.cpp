// SPDX-License-Identifier: MIT
#include "ecu/isotp/IsoTpPdu.h"

#include <algorithm>

namespace korval::ecu {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr unsigned kSingle = 0;
constexpr unsigned kFirst = 1;
constexpr unsigned kConsecutive = 2;
constexpr unsigned kFlowControl = 3;

constexpr std::size_t kFirstHeader = 2;
constexpr std::size_t kEscapeHeader = 6;
constexpr std::size_t kFlowControlBytes = 3;
constexpr milliseconds kLongestSeparation{127};

std::uint8_t Low(unsigned value) { return static_cast<std::uint8_t>(value & 0xFF); }

std::optional<IsoTpPdu> ReadSingle(base::ByteView bytes, std::size_t capacity) {
  const std::size_t length = bytes[0] & 0x0FU;
  if (length == 0 || length >= capacity || length >= bytes.size()) return std::nullopt;
  IsoTpPdu pdu;
  pdu.length = static_cast<std::uint32_t>(length);
  pdu.data = bytes.subspan(1, length);
  return pdu;
}

std::optional<IsoTpPdu> ReadFirst(base::ByteView bytes, std::size_t capacity) {
  if (bytes.size() != capacity) return std::nullopt;
  IsoTpPdu pdu;
  pdu.type = IsoTpPdu::Type::kFirst;
  pdu.length = (bytes[0] & 0x0FU) << 8 | bytes[1];
  if (pdu.length != 0) {
    if (pdu.length < capacity) return std::nullopt;  // a single frame's
    pdu.data = bytes.subspan(kFirstHeader);
    return pdu;
  }
  for (std::size_t i = kFirstHeader; i < kEscapeHeader; ++i) pdu.length = pdu.length << 8 | bytes[i];
  if (pdu.length <= kLongestWithoutEscape) return std::nullopt;
  pdu.data = bytes.subspan(kEscapeHeader);
  return pdu;
}

std::optional<IsoTpPdu> ReadConsecutive(base::ByteView bytes) {
  if (bytes.size() < 2) return std::nullopt;
  IsoTpPdu pdu;
  pdu.type = IsoTpPdu::Type::kConsecutive;
  pdu.sequence = Low(bytes[0] & 0x0FU);
  pdu.data = bytes.subspan(1);
  return pdu;
}

std::optional<IsoTpPdu> ReadFlowControl(base::ByteView bytes) {
  if (bytes.size() < kFlowControlBytes) return std::nullopt;
  IsoTpPdu pdu;
  pdu.type = IsoTpPdu::Type::kFlowControl;
  pdu.status = Low(bytes[0] & 0x0FU);
  pdu.block_size = bytes[1];
  pdu.st_min = bytes[2];
  return pdu;
}

}  // namespace

std::optional<IsoTpPdu> IsoTpPdu::Read(base::ByteView bytes, std::size_t capacity) {
  if (bytes.empty()) return std::nullopt;
  bytes = bytes.first(std::min(bytes.size(), capacity));
  switch (static_cast<unsigned>(bytes[0]) >> 4) {
    case kSingle:
      return ReadSingle(bytes, capacity);
    case kFirst:
      return ReadFirst(bytes, capacity);
    case kConsecutive:
      return ReadConsecutive(bytes);
    case kFlowControl:
      return ReadFlowControl(bytes);
    default:
      return std::nullopt;
  }
}

IsoTpPduBytes IsoTpPduBytes::Single(base::ByteView message) {
  IsoTpPduBytes pdu;
  pdu.Append(Low(static_cast<unsigned>(message.size())));
  pdu.Append(message);
  return pdu;
}

IsoTpPduBytes IsoTpPduBytes::First(base::ByteView message, std::size_t capacity) {
  IsoTpPduBytes pdu;
  const auto length = static_cast<std::uint32_t>(message.size());
  if (length <= kLongestWithoutEscape) {
    pdu.Append(Low(kFirst << 4 | length >> 8));
    pdu.Append(Low(length));
  } else {
    pdu.Append(Low(kFirst << 4));
    pdu.Append(std::uint8_t{0});
    for (int shift = 24; shift >= 0; shift -= 8) pdu.Append(Low(length >> shift));
  }
  pdu.Append(message.first(FirstFrameBytes(message.size(), capacity)));
  return pdu;
}

IsoTpPduBytes IsoTpPduBytes::Consecutive(std::uint8_t sequence, base::ByteView data) {
  IsoTpPduBytes pdu;
  pdu.Append(Low(kConsecutive << 4 | sequence));
  pdu.Append(data);
  return pdu;
}

IsoTpPduBytes IsoTpPduBytes::FlowControl(FlowStatus status, std::uint8_t block_size, std::uint8_t st_min) {
  IsoTpPduBytes pdu;
  pdu.Append(Low(kFlowControl << 4 | static_cast<unsigned>(status)));
  pdu.Append(block_size);
  pdu.Append(st_min);
  return pdu;
}

void IsoTpPduBytes::Append(base::ByteView bytes) {
  std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(length_));
  length_ += bytes.size();
}

std::size_t FirstFrameBytes(std::size_t message_length, std::size_t capacity) {
  return capacity - (message_length > kLongestWithoutEscape ? kEscapeHeader : kFirstHeader);
}

std::chrono::microseconds SeparationOf(std::uint8_t st_min) {
  if (st_min <= kLongestSeparation.count()) return milliseconds(st_min);
  if (st_min >= 0xF1 && st_min <= 0xF9) return microseconds(100) * (st_min - 0xF0);
  return kLongestSeparation;
}

std::uint8_t StMinOf(std::chrono::microseconds separation) {
  if (separation.count() > 0 && separation <= microseconds(900)) {
    return Low(0xF0U + static_cast<unsigned>((separation.count() + 99) / 100));
  }
  const auto whole = std::chrono::ceil<milliseconds>(separation);
  return Low(static_cast<unsigned>(std::clamp(whole, milliseconds(0), kLongestSeparation).count()));
}

}  // namespace korval::ecu
