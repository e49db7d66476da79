// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/trace/TextTerminal.h"
#include "host/trace/TraceConsole.h"

namespace korval::host {
namespace {

TEST(TextTerminal, CountsCharacters) {
  TextTerminal terminal;
  EXPECT_EQ(terminal.Length(), 0U);
  terminal.ReplaceSelection(
      "\xC2\xB0"
      "C\r\n");
  EXPECT_EQ(terminal.Length(), 4U);
  EXPECT_EQ(terminal.Text(),
            "\xC2\xB0"
            "C\r\n");
}

TEST(TextTerminal, ReplacesTheSelectionAndInsertsAtTheCaret) {
  TextTerminal terminal;
  terminal.ReplaceSelection("abcd");
  terminal.Select(1, 2);
  terminal.ReplaceSelection("X");
  EXPECT_EQ(terminal.Text(), "aXd");
  terminal.Select(2, 0);
  terminal.ReplaceSelection("Y");
  EXPECT_EQ(terminal.Text(), "aXYd");
}

TEST(TextTerminal, DropsTheFirstCharactersOrAll) {
  TextTerminal terminal;
  terminal.ReplaceSelection(
      "\xC2\xB0\xC2\xB0"
      "ab");
  terminal.DropFirst(1);
  EXPECT_EQ(terminal.Text(),
            "\xC2\xB0"
            "ab");
  terminal.DropFirst(100);
  EXPECT_EQ(terminal.Text(), "");
}

TEST(TextTerminal, ASelectionBeyondTheEndIsHeldInside) {
  TextTerminal terminal;
  terminal.ReplaceSelection("ab");
  terminal.Select(5, 7);
  terminal.ReplaceSelection("c");
  EXPECT_EQ(terminal.Text(), "abc");
  terminal.Select(2, 100);
  terminal.ReplaceSelection("d");
  EXPECT_EQ(terminal.Text(), "abd");
}

TEST(TextTerminal, HandsEveryPieceToItsSinkAsItIsAppended) {
  std::vector<std::string> pieces;
  TextTerminal terminal([&](std::string_view piece) { pieces.emplace_back(piece); });
  TraceConsole console(terminal);
  console.Line("init()");
  console.Line(
      "\xC2\xB0"
      "C");
  EXPECT_EQ(pieces, (std::vector<std::string>{"init()\r\n",
                                              "\xC2\xB0"
                                              "C\r\n"}));
}

TEST(TextTerminal, BytesThatAreNoUtf8AreShownAsReplacementCharacters) {
  TextTerminal terminal;
  terminal.ReplaceSelection(
      "a\x80"
      "b");
  EXPECT_EQ(terminal.Length(), 3U);
  EXPECT_EQ(terminal.Text(),
            "a\xEF\xBF\xBD"
            "b");
}

}  // namespace
}  // namespace korval::host
