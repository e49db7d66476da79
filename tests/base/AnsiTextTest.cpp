// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "base/AnsiText.h"

namespace korval::base {
namespace {

/// What windows-1252 gives the bytes 80 to 9F; the open places keep the control character of their value.
constexpr std::array<char32_t, 32> kUpperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

std::string Utf8Of(char32_t character) {
  std::string utf8;
  if (character < 0x80) {
    utf8 += static_cast<char>(character);
  } else if (character < 0x800) {
    utf8 += static_cast<char>(0xC0U | character >> 6U);
    utf8 += static_cast<char>(0x80U | (character & 0x3FU));
  } else {
    utf8 += static_cast<char>(0xE0U | character >> 12U);
    utf8 += static_cast<char>(0x80U | (character >> 6U & 0x3FU));
    utf8 += static_cast<char>(0x80U | (character & 0x3FU));
  }
  return utf8;
}

char32_t CharacterOf(std::uint8_t byte) {
  return byte >= 0x80 && byte < 0xA0 ? kUpperControls[byte - 0x80U] : byte;
}

TEST(AnsiText, EachOfThe256BytesHasItsCharacterInBothDirections) {
  for (unsigned value = 0; value < 256; ++value) {
    const auto byte = static_cast<std::uint8_t>(value);
    const std::string utf8 = Utf8Of(CharacterOf(byte));
    EXPECT_EQ(Utf8FromAnsi(ByteBuffer{byte}.View()), utf8) << value;
    EXPECT_EQ(AnsiFromUtf8(utf8), ByteBuffer{byte}) << value;
  }
}

TEST(AnsiText, SomeWellKnownCharactersAsLiteralBytes) {
  EXPECT_EQ(Utf8FromAnsi(ByteBuffer{0x80, 0xB0, 0x43, 0xE9, 0xFF}.View()),
            "\xE2\x82\xAC\xC2\xB0"
            "C\xC3\xA9\xC3\xBF");
  EXPECT_EQ(AnsiFromUtf8("\xE2\x82\xAC\xC2\xB0"
                         "C\xC3\xA9\xC3\xBF"),
            (ByteBuffer{0x80, 0xB0, 0x43, 0xE9, 0xFF}));
}

TEST(AnsiText, ACharacterWithoutAPlaceBecomesOneQuestionMark) {
  EXPECT_EQ(AnsiFromUtf8("a\xCE\xA9"
                         "b"),
            (ByteBuffer{'a', '?', 'b'}));                               // Greek capital omega
  EXPECT_EQ(AnsiFromUtf8("\xE4\xB8\xAD"), ByteBuffer{'?'});             // a Chinese character
  EXPECT_EQ(AnsiFromUtf8("\xF0\x9F\x9A\x97"), ByteBuffer{'?'});         // beyond the first plane
  EXPECT_EQ(AnsiFromUtf8("\xC2\x80\xC2\x85"), (ByteBuffer{'?', '?'}));  // their bytes are taken
  EXPECT_EQ(AnsiFromUtf8("\xF4\x8F\xBF\xBF"), ByteBuffer{'?'});         // the last character
}

TEST(AnsiText, EachByteThatIsNoValidUtf8BecomesOneQuestionMark) {
  EXPECT_EQ(AnsiFromUtf8("\x80"), ByteBuffer{'?'});             // continuation alone
  EXPECT_EQ(AnsiFromUtf8("\xC3"), ByteBuffer{'?'});             // cut
  EXPECT_EQ(AnsiFromUtf8("\xE2\x82"), (ByteBuffer{'?', '?'}));  // cut
  EXPECT_EQ(AnsiFromUtf8("\xE2\x82"
                         "A"),
            (ByteBuffer{'?', '?', 'A'}));                                         // cut by another
  EXPECT_EQ(AnsiFromUtf8("\xC0\x80"), (ByteBuffer{'?', '?'}));                    // overlong NUL
  EXPECT_EQ(AnsiFromUtf8("\xE0\x80\xAF"), (ByteBuffer{'?', '?', '?'}));           // overlong slash
  EXPECT_EQ(AnsiFromUtf8("\xED\xA0\x80"), (ByteBuffer{'?', '?', '?'}));           // surrogate
  EXPECT_EQ(AnsiFromUtf8("\xF4\x90\x80\x80"), (ByteBuffer{'?', '?', '?', '?'}));  // beyond the last
  EXPECT_EQ(AnsiFromUtf8("\xFE\xFF"), (ByteBuffer{'?', '?'}));
}

TEST(AnsiText, NulAndControlsPassUnchanged) {
  EXPECT_EQ(AnsiFromUtf8(std::string("a\0b\r\n", 5)), (ByteBuffer{'a', 0x00, 'b', 0x0D, 0x0A}));
  EXPECT_EQ(Utf8FromAnsi(ByteBuffer{'a', 0x00, 'b'}.View()), std::string("a\0b", 3));
  EXPECT_EQ(Utf8FromAnsi({}), "");
  EXPECT_TRUE(AnsiFromUtf8("").Empty());
}

TEST(AnsiText, CharactersAreDecodedOneAfterTheOther) {
  const std::string text = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x9A\x97\x80!";
  std::size_t position = 0;
  EXPECT_EQ(NextCharacter(text, position), U'A');
  EXPECT_EQ(position, 1U);
  EXPECT_EQ(NextCharacter(text, position), U'\u00E9');
  EXPECT_EQ(position, 3U);
  EXPECT_EQ(NextCharacter(text, position), U'\u20AC');
  EXPECT_EQ(position, 6U);
  EXPECT_EQ(NextCharacter(text, position), U'\U0001F697');
  EXPECT_EQ(position, 10U);
  EXPECT_EQ(NextCharacter(text, position), U'\uFFFD');
  EXPECT_EQ(position, 11U);
  EXPECT_EQ(NextCharacter(text, position), U'!');
  EXPECT_EQ(position, text.size());
}

TEST(AnsiText, CharactersAreEncodedAtEachLength) {
  std::string text;
  for (const char32_t character :
       {U'A', U'\u007F', U'\u0080', U'\u07FF', U'\u0800', U'\uFFFF', U'\U00010000', U'\U0010FFFF'})
    AppendCharacter(text, character);
  EXPECT_EQ(text, "A\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

}  // namespace
}  // namespace korval::base
