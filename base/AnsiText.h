// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "base/ByteBuffer.h"

namespace korval::base {

/// Text is UTF-8 inside the program and one byte a character in windows-1252 on the wire.
/// The five bytes that windows-1252 leaves open (81, 8D, 8F, 90, 9D) stand for the control characters
/// U+0081 to U+009D of the same value, so that every byte string survives a round trip.
std::string Utf8FromAnsi(ByteView ansi);

/// The windows-1252 bytes of a UTF-8 text, one a character; a character without one, and each byte that
/// is not valid UTF-8, becomes '?'.
ByteBuffer AnsiFromUtf8(std::string_view utf8);

/// Decodes the character that starts at `position` and moves `position` behind it. A byte that starts no
/// valid UTF-8 sequence gives U+FFFD and counts as one character.
char32_t NextCharacter(std::string_view utf8, std::size_t& position);
void AppendCharacter(std::string& utf8, char32_t character);

}  // namespace korval::base
