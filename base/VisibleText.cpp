// SPDX-License-Identifier: MIT
#include "base/VisibleText.h"

#include <algorithm>
#include <cstdint>

#include "base/AnsiText.h"
#include "base/ByteBuffer.h"

namespace korval::base {
namespace {

constexpr char32_t kInvalid = 0xFFFD;

bool IsPlain(char byte) { return byte >= 0x20 && byte < 0x7F; }

bool IsControl(char32_t character) { return character < 0x20 || (character >= 0x7F && character <= 0x9F); }

void AppendHex(std::string& text, std::uint8_t byte) { text += "\\x" + HexText({&byte, 1}); }

}  // namespace

std::string VisibleText(std::string_view utf8) {
  const auto* const first = std::find_if_not(utf8.begin(), utf8.end(), IsPlain);
  auto position = static_cast<std::size_t>(first - utf8.begin());
  std::string visible(utf8.substr(0, position));
  while (position < utf8.size()) {
    const std::size_t start = position;
    const char32_t character = NextCharacter(utf8, position);
    if (IsControl(character)) {
      AppendHex(visible, static_cast<std::uint8_t>(character));
    } else if (character == kInvalid && position - start == 1) {
      AppendHex(visible, static_cast<std::uint8_t>(utf8[start]));
    } else {
      visible += utf8.substr(start, position - start);
    }
  }
  return visible;
}

}  // namespace korval::base
