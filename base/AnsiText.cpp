// SPDX-License-Identifier: MIT
#include "base/AnsiText.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace korval::base {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Code points of the windows-1252 bytes 0x80 to 0x9F.
constexpr std::array<char32_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char32_t CharacterOf(std::uint8_t byte) {
  return byte >= 0x80 && byte <= 0x9F ? kHighControls[byte - 0x80U] : byte;
}

std::uint8_t AnsiOf(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF))
    return static_cast<std::uint8_t>(character);
  const auto* const found = std::find(kHighControls.begin(), kHighControls.end(), character);
  if (found == kHighControls.end()) return '?';
  return static_cast<std::uint8_t>(0x80 + (found - kHighControls.begin()));
}

std::uint8_t ByteAt(std::string_view text, std::size_t position) {
  return static_cast<std::uint8_t>(text[position]);
}

}  // namespace

char32_t NextCharacter(std::string_view utf8, std::size_t& position) {
  const std::uint8_t lead = ByteAt(utf8, position++);
  if (lead < 0x80) return lead;
  const std::size_t following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4 || utf8.size() - position < following) return kReplacement;
  char32_t character = lead & (0x3FU >> following);
  for (std::size_t i = 0; i < following; ++i) {
    const std::uint8_t byte = ByteAt(utf8, position + i);
    if ((byte & 0xC0) != 0x80) return kReplacement;
    character = (character << 6) | (byte & 0x3FU);
  }
  static constexpr std::array<char32_t, 4> kSmallest = {0, 0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kSmallest[following] || character > 0x10FFFF || surrogate) return kReplacement;
  position += following;
  return character;
}

void AppendCharacter(std::string& utf8, char32_t character) {
  const auto tail = [&](int shift) {
    utf8.push_back(static_cast<char>(0x80U | ((character >> shift) & 0x3FU)));
  };
  if (character < 0x80) {
    utf8.push_back(static_cast<char>(character));
  } else if (character < 0x800) {
    utf8.push_back(static_cast<char>(0xC0U | (character >> 6)));
    tail(0);
  } else if (character < 0x10000) {
    utf8.push_back(static_cast<char>(0xE0U | (character >> 12)));
    tail(6);
    tail(0);
  } else {
    utf8.push_back(static_cast<char>(0xF0U | (character >> 18)));
    tail(12);
    tail(6);
    tail(0);
  }
}

std::string Utf8FromAnsi(ByteView ansi) {
  std::string utf8;
  utf8.reserve(ansi.size());
  for (const std::uint8_t byte : ansi) AppendCharacter(utf8, CharacterOf(byte));
  return utf8;
}

ByteBuffer AnsiFromUtf8(std::string_view utf8) {
  ByteBuffer ansi;
  ansi.Reserve(utf8.size());
  std::size_t position = 0;
  while (position < utf8.size()) ansi.Append(AnsiOf(NextCharacter(utf8, position)));
  return ansi;
}

}  // namespace korval::base
