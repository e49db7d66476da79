// SPDX-License-Identifier: MIT
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/SerialSettings.h"

namespace korval::base {
namespace {

using Parity = SerialSettings::Parity;
using StopBits = SerialSettings::StopBits;
using testing::HasSubstr;

std::string Refusal(const std::string& text) {
  try {
    ReadSerialSettings(text);
  } catch (const Failure& failure) {
    return failure.Description();
  }
  return "";
}

TEST(SerialSettings, ReadsSpeedParityDataBitsAndStopBits) {
  EXPECT_EQ(ReadSerialSettings("9600,n,8,1"), (SerialSettings{9600, Parity::kNone, 8, StopBits::kOne}));
  EXPECT_EQ(ReadSerialSettings("110,E,7,2"), (SerialSettings{110, Parity::kEven, 7, StopBits::kTwo}));
  EXPECT_EQ(ReadSerialSettings("300,O,5,1.5"), (SerialSettings{300, Parity::kOdd, 5, StopBits::kOneAndHalf}));
  EXPECT_EQ(ReadSerialSettings("256000,m,4,1"), (SerialSettings{256000, Parity::kMark, 4, StopBits::kOne}));
  EXPECT_EQ(ReadSerialSettings("1200,S,6,1"), (SerialSettings{1200, Parity::kSpace, 6, StopBits::kOne}));
}

TEST(SerialSettings, TakesOddSpeeds) {
  EXPECT_EQ(ReadSerialSettings("10400,n,8,1").speed, 10400);
  EXPECT_EQ(ReadSerialSettings("1,n,8,1").speed, 1);
}

TEST(SerialSettings, TakesBlanksAroundAPart) {
  EXPECT_EQ(ReadSerialSettings(" 9600, n ,8, 1 "), ReadSerialSettings("9600,n,8,1"));
}

TEST(SerialSettings, RefusesBlanksInsideAPart) {
  EXPECT_THAT(Refusal("96 00,n,8,1"), HasSubstr("the speed is a number"));
  EXPECT_THAT(Refusal("9600,n,8,1 .5"), HasSubstr("stop bits are"));
}

TEST(SerialSettings, SaysWhichPartIsWrongAndHowItLooks) {
  EXPECT_EQ(Refusal("9600,x,8,1"),
            "Serial settings '9600,x,8,1' are wrong: the parity is n, e, o, m or s (as in 9600,n,8,1)");
  for (const char* text :
       {"fast,n,8,1", "0,n,8,1", "-9600,n,8,1", "4000001,n,8,1", "99999999999,n,8,1", ",n,8,1"}) {
    EXPECT_THAT(Refusal(text), HasSubstr("the speed is a number from 1 to 4000000")) << text;
  }
  for (const char* text : {"9600,,8,1", "9600,no,8,1", "9600,\xC3\xA9,8,1"}) {
    EXPECT_THAT(Refusal(text), HasSubstr("the parity is")) << text;
  }
  for (const char* text : {"9600,n,3,1", "9600,n,9,1", "9600,n,,1"}) {
    EXPECT_THAT(Refusal(text), HasSubstr("data bits are 4 to 8")) << text;
  }
  for (const char* text : {"9600,n,8,3", "9600,n,8,1.", "9600,n,8,", "9600,n,8,01"}) {
    EXPECT_THAT(Refusal(text), HasSubstr("stop bits are 1, 1.5 or 2")) << text;
  }
}

TEST(SerialSettings, RefusesMoreOrFewerThanFourParts) {
  for (const char* text : {"", "9600", "9600,n,8", "9600,n,8,1,", "9600,n,8,1,5", ",,,,,,"}) {
    EXPECT_THAT(Refusal(text), HasSubstr("four parts")) << text;
  }
}

}  // namespace
}  // namespace korval::base
