// SPDX-License-Identifier: MIT
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ecu/dbc/DbcFile.h"

namespace korval::ecu {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// A file as tools write it: list of names, nodes, comments, attributes, texts.
constexpr char kFile[] =
    "VERSION \"1.0\"\r\n\r\nNS_ :\r\n\tNS_DESC_\r\n\tCM_\r\n\tBA_DEF_\r\n\tVAL_\r\n\r\nBS_:\r\n\r\n"
    "BU_: ABS Dash\r\nVAL_TABLE_ States 1 \"on\" 0 \"off\" ;\r\n\r\n"
    "BO_ 416 Wheel: 8 ABS\r\n"
    " SG_ Speed : 0|16@1+ (0.01,0) [0|655.35] \"km/h\"  Dash\r\n"
    " SG_ Slip : 23|12@0- (0.5,-10) [-1034|1013.5] \"%\" Dash,ABS\r\n"
    " SG_ State : 33|2@1+ (1,0) [0|3] \"\" Dash\r\n\r\n"
    "BO_ 2566844672 Torque: 8 Vector__XXX\r\n"
    " SG_ Value : 0|32@1- (1,0) [0|0] \"Nm\" Dash\r\n\r\n"
    "CM_ BO_ 416 \"a comment; over\r\nBO_ 417 NotAMessage: 8 ABS\r\ntwo lines\";\r\n"
    "BA_DEF_ BO_ \"GenMsgCycleTime\" INT 0 65535;\r\nBA_DEF_DEF_ \"GenMsgCycleTime\" 0;\r\n"
    "BA_ \"GenMsgCycleTime\" BO_ 416 20;\r\nBA_ \"Other\" BO_ 416 7;\r\n"
    "VAL_ 416 State 2 \"steht; l\xE4uft\" 1 \"dreht\" -1 \"\" ;\r\n"
    "SIG_VALTYPE_ 2566844672 Value : 1;\r\n";

TEST(DbcFileTest, MessagesAndSignalsAsGiven) {
  const DbcFile file = DbcFile::Read(kFile);
  EXPECT_THAT(file.notes, IsEmpty());
  ASSERT_THAT(file.messages, SizeIs(2));
  const DbcFile::Message& wheel = file.messages[0];
  EXPECT_EQ(wheel.name, "Wheel");
  EXPECT_EQ(wheel.identifier, (CanIdentifier{416, false}));
  EXPECT_EQ(wheel.length, 8U);
  EXPECT_EQ(wheel.cycle_ms, 20);
  ASSERT_THAT(wheel.signals, SizeIs(3));
  const DbcFile::Signal& speed = wheel.signals[0];
  EXPECT_EQ(speed.name, "Speed");
  EXPECT_EQ(speed.start_bit, 0U);
  EXPECT_EQ(speed.bits, 16U);
  EXPECT_TRUE(speed.intel);
  EXPECT_FALSE(speed.is_signed);
  EXPECT_EQ(speed.factor, 0.01);
  EXPECT_EQ(speed.unit, "km/h");
  const DbcFile::Signal& slip = wheel.signals[1];
  EXPECT_FALSE(slip.intel);
  EXPECT_TRUE(slip.is_signed);
  EXPECT_EQ(slip.MotorolaFirstBit(), 16U);
  EXPECT_EQ(slip.offset, -10);
  const DbcFile::Message& torque = file.messages[1];
  EXPECT_EQ(torque.identifier, (CanIdentifier{0x18FEF100 & 0x1FFFFFFF, true}));
  EXPECT_EQ(torque.signals.at(0).number, DbcFile::Number::kFloat);
}

TEST(DbcFileTest, TextsAreReadFromWindows1252) {
  const DbcFile file = DbcFile::Read(kFile);
  const auto& texts = file.messages.at(0).signals.at(2).texts;
  ASSERT_THAT(texts, SizeIs(3));
  EXPECT_EQ(texts[0].raw, 2);
  EXPECT_EQ(texts[0].text, "steht; l\xC3\xA4uft");
  EXPECT_EQ(texts[2].raw, -1);
}

TEST(DbcFileTest, MotorolaStartBitIsTheMostSignificantOne) {
  const std::pair<int, std::size_t> rows[] = {{7, 0}, {0, 7}, {15, 8}, {8, 15}, {23, 16}, {63, 56}};
  for (const auto& [start, first] : rows) {
    const DbcFile file =
        DbcFile::Read("BO_ 1 M: 8 X\n SG_ S : " + std::to_string(start) + "|1@0+ (1,0) [0|0] \"\" X\n");
    ASSERT_THAT(file.messages.at(0).signals, SizeIs(1)) << start;
    EXPECT_EQ(file.messages[0].signals[0].MotorolaFirstBit(), first) << start;
  }
}

TEST(DbcFileTest, MultiplexedSignalsKnowTheirValue) {
  const DbcFile file = DbcFile::Read(
      "BO_ 1 M: 8 X\n SG_ Page M : 0|4@1+ (1,0) [0|0] \"\" X\n SG_ A m0 : 8|8@1+ (1,0) [0|0] \"\" X\n"
      " SG_ B m12 : 8|8@1+ (1,0) [0|0] \"\" X\n");
  const auto& signals = file.messages.at(0).signals;
  ASSERT_THAT(signals, SizeIs(3));
  EXPECT_TRUE(signals[0].is_multiplexor);
  EXPECT_EQ(signals[1].multiplexed_at, 0);
  EXPECT_EQ(signals[2].multiplexed_at, 12);
  EXPECT_THAT(file.notes, IsEmpty());
}

TEST(DbcFileTest, MultiplexorsBelowMultiplexorsAreLeftOutWithANote) {
  const DbcFile file = DbcFile::Read(
      "BO_ 1 M: 8 X\n SG_ Page M : 0|4@1+ (1,0) [0|0] \"\" X\n SG_ Sub m1M : 8|8@1+ (1,0) [0|0] \"\" X\n"
      "BO_ 2 N: 8 X\n SG_ A m0 : 8|8@1+ (1,0) [0|0] \"\" X\n SG_ Plain : 0|8@1+ (1,0) [0|0] \"\" X\n");
  EXPECT_THAT(file.messages.at(0).signals, SizeIs(1));
  ASSERT_THAT(file.messages.at(1).signals, SizeIs(1));
  EXPECT_EQ(file.messages[1].signals[0].name, "Plain");
  EXPECT_THAT(
      file.notes,
      ElementsAre("Line 3: signal Sub has a multiplexing that is not understood, left out.",
                  "Message N has 0 multiplexors instead of one: its 1 multiplexed signals are left out."));
}

struct Damaged {
  const char* name;
  const char* line;
  const char* note;
};

class DamagedDbcTest : public testing::TestWithParam<Damaged> {};

TEST_P(DamagedDbcTest, IsLeftOutWithANoteAndTheRestIsRead) {
  const DbcFile file =
      DbcFile::Read("BO_ 1 M: 4 X\n SG_ Good : 0|8@1+ (1,0) [0|0] \"\" X\n" + std::string(GetParam().line) +
                    "\n SG_ After : 8|8@1+ (1,0) [0|0] \"\" X\nBO_ 7 Last: 1 X\n");
  ASSERT_THAT(file.notes, SizeIs(1));
  EXPECT_THAT(file.notes[0], HasSubstr("Line 3: "));
  EXPECT_THAT(file.notes[0], HasSubstr(GetParam().note));
  ASSERT_THAT(file.messages, testing::Not(IsEmpty()));
  EXPECT_EQ(file.messages.front().signals.at(0).name, "Good");
  EXPECT_EQ(file.messages.back().name, "Last");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DamagedDbcTest,
    testing::Values(Damaged{"MessageWithoutNumber", "BO_ M2: 8 X", "no message"},
                    Damaged{"MessageWithoutName", "BO_ 2 : 8 X", "no message"},
                    Damaged{"MessageWithoutLength", "BO_ 2 M2: X", "no length"},
                    Damaged{"IdentifierOf12Bits", "BO_ 2048 M2: 8 X", "no identifier"},
                    Damaged{"IdentifierOf33Bits", "BO_ 8589934592 M2: 8 X", "no identifier"},
                    Damaged{"CanFd", "BO_ 2 M2: 64 X", "longer than 8 bytes"},
                    Damaged{"SecondOfItsIdentifier", "BO_ 1 M2: 8 X", "identifier of another"},
                    Damaged{"SignalWithoutName", " SG_ : 0|8@1+ (1,0) [0|0] \"\" X", "no signal"},
                    Damaged{"SignalWithoutBits", " SG_ S : 0|0@1+ (1,0) [0|0] \"\" X", "lies outside"},
                    Damaged{"SignalOf65Bits", " SG_ S : 0|65@1+ (1,0) [0|0] \"\" X", "lies outside"},
                    Damaged{"IntelBehindTheEnd", " SG_ S : 25|8@1+ (1,0) [0|0] \"\" X", "lies outside"},
                    Damaged{"MotorolaBehindTheEnd", " SG_ S : 30|8@0+ (1,0) [0|0] \"\" X", "lies outside"},
                    Damaged{"HugeStart", " SG_ S : 999999999999|8@1+ (1,0) [0|0] \"\" X", "lies outside"},
                    Damaged{"NegativeStart", " SG_ S : -1|8@1+ (1,0) [0|0] \"\" X", "is damaged"},
                    Damaged{"UnknownOrder", " SG_ S : 0|8@2+ (1,0) [0|0] \"\" X", "is damaged"},
                    Damaged{"UnknownSign", " SG_ S : 0|8@1* (1,0) [0|0] \"\" X", "is damaged"},
                    Damaged{"FactorZero", " SG_ S : 0|8@1+ (0,0) [0|0] \"\" X", "is damaged"},
                    Damaged{"NoOffset", " SG_ S : 0|8@1+ (1) [0|0] \"\" X", "is damaged"},
                    Damaged{"UnitThatDoesNotEnd", " SG_ S : 0|8@1+ (1,0) [0|0] \"km X", "is damaged"},
                    Damaged{"TextsThatDoNotEnd", "VAL_ 1 Good 0 \"off\" 1 \"on\"", "does not end"},
                    Damaged{"TextWithoutValue", "VAL_ 1 Good \"off\" ;", "a text of signal Good"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(DbcFileTest, WhatNamesNothingKnownIsPassedOver) {
  const DbcFile file = DbcFile::Read(
      "SG_ Lost : 0|8@1+ (1,0) [0|0] \"\" X\nBO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 X\n"
      " SG_ Loose : 0|8@1+ (1,0) [0|0] \"\" X\nBO_ 1 M: 1 X\n SG_ S : 0|8@1+ (1,0) [0|0] \"\" X\n"
      "VAL_ 2 S 0 \"x\" ;\nVAL_ 1 T 0 \"x\" ;\nVAL_ Variable 0 \"x\" ;\nSIG_VALTYPE_ 1 S : 1;\n"
      "BA_ \"GenMsgCycleTime\" BO_ 9 10;\nBA_ \"GenMsgCycleTime\" BO_ 1 -5;\nnonsense \xFF\x00 here\n");
  EXPECT_THAT(file.notes, IsEmpty());
  ASSERT_THAT(file.messages, SizeIs(1));
  EXPECT_THAT(file.messages[0].signals, SizeIs(1));
  EXPECT_THAT(file.messages[0].signals[0].texts, IsEmpty());
  EXPECT_EQ(file.messages[0].signals[0].number, DbcFile::Number::kInteger);
  EXPECT_EQ(file.messages[0].cycle_ms, 0);
}

TEST(DbcFileTest, NotesAndTheSearchForEndsAreBounded) {
  std::string content = "BO_ 1 M: 1 X\n";
  for (int i = 0; i < 100000; ++i) content += "VAL_ 1 S 0 \"x\"\n SG_ S\n";
  const DbcFile file = DbcFile::Read(content);
  EXPECT_THAT(file.notes, SizeIs(101));
  EXPECT_EQ(file.notes.back(), "There is more.");
}

}  // namespace
}  // namespace korval::ecu
