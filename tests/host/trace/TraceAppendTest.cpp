// SPDX-License-Identifier: MIT
#include <algorithm>
#include <new>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "host/trace/TextTerminal.h"
#include "host/trace/TraceConsole.h"

namespace korval::host {
namespace {

using ::testing::InSequence;
using ::testing::Return;
using ::testing::Throw;

class MockTerminal : public Terminal {
 public:
  MOCK_METHOD(std::size_t, Length, (), (const, override));
  MOCK_METHOD(void, DropFirst, (std::size_t count), (override));
  MOCK_METHOD(void, Select, (std::size_t start, std::size_t length), (override));
  MOCK_METHOD(void, ReplaceSelection, (std::string_view text), (override));
};

class TraceAppendOnTerminal : public ::testing::Test {
 protected:
  /// The whole text after `text` was appended.
  std::string After(std::string text) {
    TraceAppend(terminal_, text);
    return terminal_.Text();
  }

  TextTerminal terminal_;
};

TEST_F(TraceAppendOnTerminal, AppendsInOrder) {
  After("one\r\n");
  EXPECT_EQ(After("two\r\n"), "one\r\ntwo\r\n");
}

TEST_F(TraceAppendOnTerminal, ALineFeedAloneVanishes) { EXPECT_EQ(After("x\ny"), "xy"); }

TEST_F(TraceAppendOnTerminal, ACarriageReturnAloneBecomesALineEnd) { EXPECT_EQ(After("x\ry"), "x\r\ny"); }

TEST_F(TraceAppendOnTerminal, ALineEndStaysAsItIs) { EXPECT_EQ(After("x\r\ny"), "x\r\ny"); }

TEST_F(TraceAppendOnTerminal, LineEndsOfAllKindsInOnePiece) {
  EXPECT_EQ(After("\ra\n\rb\r\rc\r\n\nd\r"), "\r\na\r\nb\r\n\r\nc\r\nd\r\n");
}

TEST_F(TraceAppendOnTerminal, ABackspaceErasesTheCharacterBeforeIt) {
  EXPECT_EQ(After("abc\bd"), "abd");
  EXPECT_EQ(After("abc\b\b\bx"), "abdx");
}

TEST_F(TraceAppendOnTerminal, AMillionLineEndsAndBackspacesCostNoMoreThanOtherText) {
  // Work that grows with the square of the piece would end at the test's timeout.
  constexpr std::size_t kMany = 1'000'000;
  EXPECT_EQ(After(std::string(kMany, '\r')).size(), 2 * kMany);
  EXPECT_EQ(After(std::string(kMany, 'a') + std::string(kMany, '\b')).size(), kTerminalLimit);
}

TEST_F(TraceAppendOnTerminal, LongPiecesDoNotOutrunTheCut) {
  for (int i = 0; i < 5; ++i) After(std::string(400'000, 'a'));
  EXPECT_EQ(terminal_.Length(), kTerminalLimit + 400'000);
}

TEST_F(TraceAppendOnTerminal, ABackspaceErasesAWholeCharacterNotAByte) {
  EXPECT_EQ(After("a\xE2\x82\xAC\bb"), "ab");
  EXPECT_EQ(After("\xC2\xB0"), "ab\xC2\xB0");
  EXPECT_EQ(After("\bc"), "abc");
}

TEST_F(TraceAppendOnTerminal, ALeadingBackspaceErasesTheTerminalsLastCharacter) {
  After("abc");
  EXPECT_EQ(After("\bx"), "abx");
}

TEST_F(TraceAppendOnTerminal, TwoLeadingBackspacesStillEraseOnlyOneCharacter) {
  After("abc");
  EXPECT_EQ(After("\b\bx"), "abx");
  EXPECT_EQ(After("\b\b\b\b\b"), "ab");
}

TEST_F(TraceAppendOnTerminal, ABackspaceTooManyInsideThePieceReachesTheTerminal) {
  After("abc");
  EXPECT_EQ(After("z\b\bx"), "abx");
}

TEST_F(TraceAppendOnTerminal, ALeadingBackspaceOnAnEmptyTerminalErasesNothing) {
  EXPECT_EQ(After("\bx"), "x");
}

TEST_F(TraceAppendOnTerminal, BackspacesAreHonouredBeforeLineEndsAreMended) {
  EXPECT_EQ(After("a\n\bb"), "ab");          // took the line feed
  EXPECT_EQ(After("c\r\n\bd"), "abc\r\nd");  // took the line feed, the carriage return makes a line end
  EXPECT_EQ(After("\r\b"), "abc\r\nd");
}

TEST_F(TraceAppendOnTerminal, ALeadingBackspaceAfterALineEndErasesOnlyItsLineFeed) {
  After("ab\r\n");
  EXPECT_EQ(After("\bc"), "ab\rc");
}

TEST_F(TraceAppendOnTerminal, AnEmptyTextMovesOnlyTheCaretToTheEnd) {
  After("abc");
  terminal_.Select(1, 1);
  EXPECT_EQ(After(""), "abc");
  EXPECT_EQ(terminal_.SelectionStart(), 3U);
  EXPECT_EQ(terminal_.SelectionLength(), 0U);
}

TEST_F(TraceAppendOnTerminal, AppendsAtTheEndWhereverTheCaretStood) {
  After("abc");
  terminal_.Select(0, 2);
  EXPECT_EQ(After("d"), "abcd");
  EXPECT_EQ(terminal_.SelectionStart(), 4U);
}

TEST_F(TraceAppendOnTerminal, SixteenThousandCharactersAreNotCut) {
  After(std::string(16000, 'a'));
  EXPECT_EQ(After("b"), std::string(16000, 'a') + "b");
}

TEST_F(TraceAppendOnTerminal, OneCharacterMoreLosesTheFirst4096BeforeTheAppend) {
  After("<" + std::string(4095, 'a') + ">" + std::string(11904, 'b'));
  ASSERT_EQ(terminal_.Length(), 16001U);
  EXPECT_EQ(After("c"), ">" + std::string(11904, 'b') + "c");
}

TEST_F(TraceAppendOnTerminal, ALongPieceIsAppendedWholeAndCutOnlyOnce) {
  EXPECT_EQ(After(std::string(50000, 'a')).size(), 50000U);
  EXPECT_EQ(After("b").size(), 50000U - 4096U + 1U);
}

TEST_F(TraceAppendOnTerminal, TheCutCountsCharactersNotBytes) {
  std::string text;
  for (int i = 0; i < 16000; ++i) text += "\xE2\x82\xAC";
  After(text);
  EXPECT_EQ(After("").size(), 48000U);
  After("x");
  After("y");
  EXPECT_EQ(terminal_.Length(), 16001U - 4096U + 1U);
}

TEST_F(TraceAppendOnTerminal, TheCutMayFallInTheMiddleOfALineEnd) {
  After(std::string(4095, 'a') + "\r\n" + std::string(11904, 'b'));
  EXPECT_EQ(After("c"), "\n" + std::string(11904, 'b') + "c");
}

TEST_F(TraceAppendOnTerminal, ALeadingBackspaceAfterTheCutErasesTheNewLastCharacter) {
  After(std::string(16000, 'a') + "b");
  EXPECT_EQ(After("\bc"), std::string(16000 - 4096, 'a') + "c");
}

TEST_F(TraceAppendOnTerminal, MuchTrafficKeepsTheTerminalShort) {
  std::size_t longest = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string text = "Byte received : 0006\r\n";
    TraceAppend(terminal_, text);
    longest = std::max(longest, terminal_.Length());
  }
  EXPECT_GT(longest, 16000U);
  EXPECT_LE(longest, 16000U + 22U);
}

TEST(TraceAppend, PlacesTheCaretThenTheTextThenTheCaretAgain) {
  MockTerminal terminal;
  std::size_t length = 3;
  EXPECT_CALL(terminal, Length()).WillRepeatedly([&] { return length; });
  EXPECT_CALL(terminal, DropFirst).Times(0);
  InSequence sequence;
  EXPECT_CALL(terminal, Select(3, 0));
  EXPECT_CALL(terminal, ReplaceSelection(std::string_view("x\r\n"))).WillOnce([&] { length = 6; });
  EXPECT_CALL(terminal, Select(6, 0));
  std::string text = "x\r";
  TraceAppend(terminal, text);
}

TEST(TraceAppend, AFailingTerminalNeverReachesTheCaller) {
  MockTerminal terminal;
  EXPECT_CALL(terminal, Length()).WillOnce(Throw(base::Failure("the text box is gone")));
  std::string text = "x";
  TraceAppend(terminal, text);

  MockTerminal broken;
  EXPECT_CALL(broken, Length()).WillRepeatedly(Return(0));
  EXPECT_CALL(broken, Select).Times(::testing::AnyNumber());
  EXPECT_CALL(broken, ReplaceSelection).WillRepeatedly(Throw(std::bad_alloc()));
  TraceConsole(broken).Line("y");
}

TEST(TraceConsole, ALineEndsWithCrLf) {
  TextTerminal terminal;
  TraceConsole console(terminal);
  console.Line("init()");
  console.Append("exit()");
  EXPECT_EQ(terminal.Text(), "init()\r\nexit()");
}

TEST(TraceConsole, WhatIsTracedIsNeverMoreThanOneLineAndTakesNothingBack) {
  TextTerminal terminal;
  TraceConsole console(terminal);
  console.Line("init()");
  console.Append(std::string("\b\ba\0b", 5));
  console.Line("\r\nexit()");
  EXPECT_EQ(terminal.Text(),
            "init()\r\n"
            R"(\x08\x08a\x00b\x0D\x0Aexit())"
            "\r\n");
}

TEST(TraceConsole, DebugTraceIsOffAtTheStartAndNeverGatesAnAppend) {
  TextTerminal terminal;
  TraceConsole console(terminal);
  EXPECT_FALSE(console.DebugTrace());
  console.Line("a");
  console.SetDebugTrace(true);
  EXPECT_TRUE(console.DebugTrace());
  console.Line("b");
  console.SetDebugTrace(false);
  EXPECT_FALSE(console.DebugTrace());
  EXPECT_EQ(terminal.Text(), "a\r\nb\r\n");
}

}  // namespace
}  // namespace korval::host
