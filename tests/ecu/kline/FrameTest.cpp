// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ecu/kline/EchoFilter.h"
#include "ecu/kline/FrameReader.h"
#include "ecu/kline/KLineFrame.h"
#include "ecu/kline/KeyBytes.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using Result = FrameReader::Result;

struct FrameRow {
  HeaderForm form;
  const char* message;
  const char* frame;
};

const std::vector<FrameRow> kFrames{
    {{true, false}, "81", "8110F18103"},      {{true, false}, "2101", "8210F12101A5"},
    {{true, true}, "2101", "8010F1022101A5"}, {{false, false}, "2101", "02210124"},
    {{false, true}, "2101", "0002210124"},
};

// What is read of the bytes: messages in hexadecimal digits, "!" and a reason, "..." for an open end.
std::vector<std::string> Read(const ByteBuffer& bytes) {
  FrameReader reader;
  std::vector<std::string> read;
  for (const std::uint8_t byte : bytes.View()) {
    const Result result = reader.Add(byte);
    if (result == Result::kFrame) read.push_back(base::HexText(reader.Message()));
    if (result == Result::kMalformed) read.push_back(std::string("!") + reader.Reason());
  }
  if (reader.IsInside()) read.emplace_back("...");
  return read;
}

std::vector<std::string> Read(const std::string& hex) { return Read(ByteBuffer::FromHex(hex)); }

using Texts = std::vector<std::string>;

TEST(FrameTest, IsBuiltInAllFourHeaderForms) {
  for (const FrameRow& row : kFrames) {
    EXPECT_EQ(BuildFrame(row.form, 0x10, 0xF1, ByteBuffer::FromHex(row.message).View()).ToHex(), row.frame);
  }
}

TEST(FrameTest, IsReadInAllFourHeaderForms) {
  for (const FrameRow& row : kFrames) {
    FrameReader reader;
    const ByteBuffer frame = ByteBuffer::FromHex(row.frame);
    for (std::size_t place = 0; place + 1 < frame.Length(); ++place) {
      EXPECT_EQ(reader.Add(frame.At(place)), Result::kIncomplete) << row.frame;
      EXPECT_TRUE(reader.IsInside()) << row.frame;
    }
    EXPECT_EQ(reader.Add(frame.At(frame.Length() - 1)), Result::kFrame) << row.frame;
    EXPECT_FALSE(reader.IsInside()) << row.frame;
    EXPECT_EQ(base::HexText(reader.Message()), row.message);
    EXPECT_EQ(reader.Form(), row.form) << row.frame;
    EXPECT_EQ(reader.Target(), row.form.addresses ? 0x10 : 0) << row.frame;
    EXPECT_EQ(reader.Source(), row.form.addresses ? 0xF1 : 0) << row.frame;
  }
}

TEST(FrameTest, EveryLengthSurvivesTheRoundTrip) {
  for (std::size_t length = 1; length <= kLongestKLineMessage; ++length) {
    ByteBuffer message;
    for (std::size_t place = 0; place < length; ++place) message.Append(static_cast<std::uint8_t>(place * 7));
    for (const bool addresses : {true, false}) {
      EXPECT_EQ(Read(BuildFrame({addresses, true}, 0x10, 0xF1, message.View())), Texts{message.ToHex()});
      if (length > kLongestLengthInFormat) continue;
      EXPECT_EQ(Read(BuildFrame({addresses, false}, 0x10, 0xF1, message.View())), Texts{message.ToHex()});
    }
  }
}

TEST(FrameTest, FramesBehindEachOtherAreReadOneByOne) {
  EXPECT_EQ(Read("83F110610180660002210124"), (Texts{"610180", "2101"}));
}

TEST(FrameTest, AnyByteDamagedIsNoFrameOfThisMessage) {
  const ByteBuffer good = ByteBuffer::FromHex("83F11061018066");
  for (std::size_t place = 0; place < good.Length(); ++place) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      ByteBuffer damaged = good;
      damaged.SetAt(place, static_cast<std::uint8_t>(damaged.At(place) ^ (1U << bit)));
      for (const std::string& text : Read(damaged)) EXPECT_NE(text, "610180") << damaged.ToHex();
    }
  }
}

TEST(FrameTest, TruncatedAnywhereItStaysOpen) {
  const ByteBuffer good = ByteBuffer::FromHex("8010F1022101A5");
  for (std::size_t length = 1; length < good.Length(); ++length) {
    EXPECT_EQ(Read(ByteBuffer(good.View(0, length))), Texts{"..."}) << length;
  }
}

TEST(FrameTest, WhatNoFrameCanBeIsSaid) {
  EXPECT_EQ(Read("8210F12101A6"), Texts{"!a wrong checksum"});
  EXPECT_EQ(Read("8010F100"), Texts{"!a length of 0"});
  EXPECT_EQ(Read("0000"), Texts{"!a length of 0"});
  EXPECT_EQ(Read("48"), Texts{"!a format byte of another standard"});
}

TEST(FrameTest, ResetForgetsAnOpenFrame) {
  FrameReader reader;
  reader.Add(0x82);
  reader.Add(0x10);
  reader.Reset();
  EXPECT_FALSE(reader.IsInside());
  for (const std::uint8_t byte : std::vector<std::uint8_t>{0x02, 0x21, 0x01})
    EXPECT_EQ(reader.Add(byte), Result::kIncomplete);
  EXPECT_EQ(reader.Add(0x24), Result::kFrame);
}

TEST(EchoFilterTest, LowLevelOfTheLineIsPassedOverInFrontOfTheEchoOnly) {
  const ByteBuffer sent = ByteBuffer::FromHex("8110F18103");
  ByteBuffer rest;
  EchoFilter behind_low(KLineDescription::Echo::kAutomatic);
  behind_low.LineWasLow();
  behind_low.Expect(sent.View());
  EXPECT_TRUE(behind_low.Filter(ByteBuffer{0x00}.View(), rest));
  EXPECT_TRUE(behind_low.Filter(sent.View(), rest));
  EXPECT_EQ(behind_low.State(), KLineDescription::Echo::kOn);
  EXPECT_TRUE(rest.Empty());
  behind_low.Expect(sent.View());
  EXPECT_FALSE(behind_low.Filter(ByteBuffer{0x00}.View(), rest));

  EchoFilter as_usual(KLineDescription::Echo::kAutomatic);
  as_usual.Expect(sent.View());
  EXPECT_TRUE(as_usual.Filter(ByteBuffer::FromHex("0001C1C2").View(), rest));
  EXPECT_EQ(as_usual.State(), KLineDescription::Echo::kOff);
  EXPECT_EQ(rest.ToHex(), "0001C1C2");
}

struct KeyRow {
  std::uint8_t first;
  std::size_t length;
  std::optional<HeaderForm> form;
  bool extended;
};

TEST(KeyBytesTest, SayWhichHeaderServesAndWhichTimes) {
  const std::vector<KeyRow> rows{
      {0xEF, 63, HeaderForm{true, false}, false},  {0xEF, 64, HeaderForm{true, true}, false},
      {0xEF, 255, HeaderForm{true, true}, false},  {0xEF, 256, std::nullopt, false},
      {0xE9, 63, HeaderForm{true, false}, false},  {0xE9, 64, std::nullopt, false},
      {0x6B, 64, HeaderForm{true, true}, false},   {0x6D, 10, HeaderForm{true, false}, false},
      {0xE5, 10, HeaderForm{false, false}, false}, {0xE6, 10, HeaderForm{false, true}, false},
      {0xD0, 10, HeaderForm{true, false}, false},  {0xD0, 64, HeaderForm{true, true}, false},
      {0xD9, 63, HeaderForm{true, false}, true},   {0x51, 63, HeaderForm{true, false}, true},
  };
  for (const KeyRow& row : rows) {
    const auto key_bytes = KeyBytes::Read(row.first, 0x8F);
    ASSERT_TRUE(key_bytes) << static_cast<int>(row.first);
    EXPECT_EQ(key_bytes->FormFor(row.length), row.form) << static_cast<int>(row.first) << " " << row.length;
    EXPECT_EQ(key_bytes->HasExtendedTimes(), row.extended) << static_cast<int>(row.first);
  }
}

TEST(KeyBytesTest, OfAnotherStandardAreNone) {
  EXPECT_FALSE(KeyBytes::Read(0x08, 0x08));
  EXPECT_FALSE(KeyBytes::Read(0xEF, 0x8E));
  EXPECT_FALSE(KeyBytes::Read(0xAF, 0x8F));
  EXPECT_FALSE(KeyBytes::Read(0x01, 0x8F));
}

TEST(KeyBytesTest, WithAWrongParityTheySayTheSame) {
  for (const auto& [first, second] : std::vector<std::pair<std::uint8_t, std::uint8_t>>{
           {0x69, 0x8F}, {0xE9, 0x0F}, {0x69, 0x0F}, {0xE9, 0x8F}}) {
    const auto key_bytes = KeyBytes::Read(first, second);
    ASSERT_TRUE(key_bytes) << static_cast<int>(first);
    EXPECT_EQ(key_bytes->FormFor(64), std::nullopt);
    EXPECT_EQ(key_bytes->HasRightParity(), first == 0xE9 && second == 0x8F) << static_cast<int>(first);
  }
}

}  // namespace
}  // namespace korval::ecu
