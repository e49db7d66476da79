// SPDX-License-Identifier: MIT
// The protocol data units of ISO 15765-2 in a frame of classic CAN, without the address byte that extended
// addressing puts in front:
//   single frame       0L data                L: length, 1 to 7
//   first frame        1L LL data             length 8 to 4095
//                      10 00 LL LL LL LL data length 4096 and more (the escape)
//   consecutive frame  2N data                N: sequence number, from 1, 0 behind F
//   flow control       3S BS ST               S: flow status, BS: block size, ST: STmin
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/ByteBuffer.h"

namespace korval::ecu {

/// Values of the flow status; the others are reserved.
enum class FlowStatus : std::uint8_t { kContinue = 0, kWait = 1, kOverflow = 2 };

struct IsoTpPdu {
  enum class Type { kSingle, kFirst, kConsecutive, kFlowControl };

  Type type = Type::kSingle;
  std::uint32_t length = 0;     ///< of the message; single and first frame
  std::uint8_t sequence = 0;    ///< consecutive frame
  std::uint8_t status = 0;      ///< flow control, see FlowStatus
  std::uint8_t block_size = 0;  ///< flow control
  std::uint8_t st_min = 0;      ///< flow control
  base::ByteView data;          ///< the part of the message, of a single frame without padding

  /// Reads the bytes of a frame that holds at most `capacity` of them (8, or 7 behind an address byte).
  /// None for what ISO 15765-2 has the receiver ignore: an unknown type, a length that belongs to another
  /// type, a frame cut short.
  static std::optional<IsoTpPdu> Read(base::ByteView bytes, std::size_t capacity);
};

/// The bytes of one PDU.
class IsoTpPduBytes {
 public:
  static IsoTpPduBytes Single(base::ByteView message);
  /// `message` is longer than a single frame takes; the frame is filled up to `capacity` from it.
  static IsoTpPduBytes First(base::ByteView message, std::size_t capacity);
  /// `data` fits into the frame.
  static IsoTpPduBytes Consecutive(std::uint8_t sequence, base::ByteView data);
  static IsoTpPduBytes FlowControl(FlowStatus status, std::uint8_t block_size, std::uint8_t st_min);

  base::ByteView View() const { return base::ByteView(bytes_).first(length_); }

 private:
  void Append(std::uint8_t byte) { bytes_[length_++] = byte; }
  void Append(base::ByteView bytes);

  std::array<std::uint8_t, 8> bytes_{};
  std::size_t length_ = 0;
};

/// The longest message of a first frame without the escape.
inline constexpr std::uint32_t kLongestWithoutEscape = 4095;

/// Bytes of the message in a first frame of `capacity` bytes.
std::size_t FirstFrameBytes(std::size_t message_length, std::size_t capacity);

/// The separation that an STmin byte asks for: 00 to 7F ms, F1 to F9 hundreds of microseconds; reserved
/// values count as 127 ms.
std::chrono::microseconds SeparationOf(std::uint8_t st_min);
/// The byte for the shortest separation not below `separation`, at most 127 ms.
std::uint8_t StMinOf(std::chrono::microseconds separation);

}  // namespace korval::ecu
