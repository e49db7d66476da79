// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "base/AnsiText.h"
#include "base/VisibleText.h"

namespace korval::base {
namespace {

using namespace std::string_literals;

TEST(VisibleText, WhatIsVisibleStaysAsItIs) {
  EXPECT_EQ(VisibleText(""), "");
  EXPECT_EQ(VisibleText("exit()"), "exit()");
  EXPECT_EQ(VisibleText(R"(C:\asap\x0D.xml)"), R"(C:\asap\x0D.xml)");
  EXPECT_EQ(VisibleText("Gr\u00FC\u00DFe \u20AC \u201Ex\u201C \u2400 \U0001F527 \uFFFD"),
            "Gr\u00FC\u00DFe \u20AC \u201Ex\u201C \u2400 \U0001F527 \uFFFD");
}

TEST(VisibleText, EveryControlCharacterIsShown) {
  for (char32_t character = 0; character < 0x100; ++character) {
    if (character >= 0x20 && (character < 0x7F || character > 0x9F)) continue;
    std::string text = "a";
    AppendCharacter(text, character);
    const auto byte = static_cast<std::uint8_t>(character);
    EXPECT_EQ(VisibleText(text + "b"), "a\\x" + HexText({&byte, 1}) + "b");
  }
}

TEST(VisibleText, SeveralInARow) { EXPECT_EQ(VisibleText("\0\0\r\n\x1B[2J"s), R"(\x00\x00\x0D\x0A\x1B[2J)"); }

TEST(VisibleText, BytesThatAreNoUtf8AreShown) {
  EXPECT_EQ(VisibleText("a\x9B[2J"), R"(a\x9B[2J)");
  EXPECT_EQ(VisibleText("\xC3"), R"(\xC3)");
  EXPECT_EQ(VisibleText("\xE2\x82 \xC0\x9B"), R"(\xE2\x82 \xC0\x9B)");
}

TEST(VisibleText, OfAnythingThatComesOverTheWireNoControlCharacterIsLeft) {
  ByteBuffer bytes;
  for (int byte = 0; byte < 256; ++byte) bytes.Append(static_cast<std::uint8_t>(byte));
  const std::string shown = VisibleText(Utf8FromAnsi(bytes.View()));
  for (std::size_t position = 0; position < shown.size();) {
    const char32_t character = NextCharacter(shown, position);
    EXPECT_TRUE(character >= 0x20 && (character < 0x7F || character > 0x9F)) << unsigned(character);
  }
}

}  // namespace
}  // namespace korval::base
