// SPDX-License-Identifier: MIT
// The four field types of the protocol. Every multi-byte field is big-endian:
//   word    2 bytes, unsigned
//   real    4 bytes, IEEE 754 single
//   real8   8 bytes, IEEE 754 double
//   string  a word n, n characters in windows-1252, and a fill byte 0 when n is odd
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/ByteBuffer.h"

namespace korval::protocol {

/// The readers take the parameter area of a request and a read position, which they move behind the
/// field. A field that is not wholly there raises Failure and leaves the position where it was.
std::int32_t ReadWord(base::ByteView area, std::size_t& position);
float ReadReal(base::ByteView area, std::size_t& position);
double ReadReal8(base::ByteView area, std::size_t& position);
std::string ReadString(base::ByteView area, std::size_t& position);

/// The writers append to the reply data. A word is the low 16 bits of the value; a text has at most
/// kMaxStringLength characters on the wire, the rest is cut.
void AppendWord(base::ByteBuffer& reply, std::int32_t value);
void AppendReal(base::ByteBuffer& reply, float value);
void AppendReal8(base::ByteBuffer& reply, double value);
void AppendString(base::ByteBuffer& reply, std::string_view text);

inline constexpr std::size_t kMaxStringLength = 65534;

}  // namespace korval::protocol
