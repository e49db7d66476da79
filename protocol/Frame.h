// SPDX-License-Identifier: MIT
// One ASAP3 frame. A request is length (word, all bytes), command code (word), parameters, checksum
// (word); a reply is length, the request's command code, status (word), reply data, checksum. The
// length is always even; the checksum is the sum of all words before it, modulo 65536.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/ByteBuffer.h"

namespace korval::protocol {

inline constexpr std::size_t kLengthOffset = 0;
inline constexpr std::size_t kCommandOffset = 2;
inline constexpr std::size_t kStatusOffset = 4;
/// A request without parameters.
inline constexpr std::size_t kShortestFrame = 6;
/// The longest reply data that an even 16-bit length leaves room for.
inline constexpr std::size_t kMaxReplyData = 65534 - 8;

/// The complete reply to a frame that arrives while a command is in progress: command 115 whatever was
/// sent, status error, code 1, "Global error".
inline constexpr std::string_view kGlobalErrorFrame = "00180073FFFF0001000C476C6F62616C206572726F721B1A";

/// Whether a length field can stand for a frame at all: at least kShortestFrame, and even.
bool IsFrameLength(std::size_t length);

/// Whether `bytes` are the beginning of a frame whose end has not come: too few for a length field, or fewer
/// than a length field says that can stand for a frame.
bool IsIncomplete(base::ByteView bytes);
/// How many bytes are still to come; 0 when that cannot be told, or none are.
std::size_t MissingBytes(base::ByteView bytes);

/// Whether the checksum holds in the frame that the length field spans. The frame is wholly there.
bool IsChecksumValid(const base::ByteBuffer& frame);

/// The bytes between command code and checksum; empty for a command without parameters.
base::ByteView ParameterArea(const base::ByteBuffer& frame);

/// Makes `frame` the reply to the command `code`: length, code, status (low 16 bits), data and checksum.
/// `data` has at most kMaxReplyData bytes.
void FinishReply(base::ByteBuffer& frame, std::uint16_t code, std::int32_t status,
                 const base::ByteBuffer& data);

}  // namespace korval::protocol
