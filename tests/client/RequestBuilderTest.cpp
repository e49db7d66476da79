// SPDX-License-Identifier: MIT
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "client/RequestBuilder.h"

namespace korval::client {
namespace {

TEST(RequestBuilderTest, ARequestWithoutFieldsIsLengthCommandAndChecksum) {
  EXPECT_EQ(RequestBuilder(2).Frame().ToHex(), "000600020008");
  EXPECT_EQ(RequestBuilder(0xFFFF).Frame().ToHex(), "0006FFFF0005");
}

TEST(RequestBuilderTest, WordsAreBigEndian) {
  EXPECT_EQ(RequestBuilder(13).Word(0).Word(0x1234).Word(0xFFFF).Frame().ToHex(), "000C000D00001234FFFF124C");
}

TEST(RequestBuilderTest, ANumberThatIsNoWordIsRefused) {
  EXPECT_THROW(RequestBuilder(13).Word(-1), base::Failure);
  EXPECT_THROW(RequestBuilder(13).Word(0x10000), base::Failure);
}

TEST(RequestBuilderTest, RealsAreBigEndianIeee754) {
  EXPECT_EQ(RequestBuilder(15).Real(1.0F).Frame().ToHex(),
            "000A000F3F800000"
            "3F99");
  EXPECT_EQ(RequestBuilder(15).Real(-0.1F).Frame().ToHex(),
            "000A000FBDCCCCCD"
            "8AB2");
  EXPECT_EQ(RequestBuilder(15).Real8(-0.1).Frame().ToHex(),
            "000E000FBFB999999999999A"
            "8CA2");
}

TEST(RequestBuilderTest, AStringIsFilledToAnEvenLengthAndNotTerminated) {
  EXPECT_EQ(RequestBuilder(20).String("").Frame().ToHex(), "000800140000001C");
  EXPECT_EQ(RequestBuilder(20).String("a").Frame().ToHex(),
            "000A00140001"
            "6100"
            "611F");
  EXPECT_EQ(RequestBuilder(20).String("ab").Word(7).Frame().ToHex(),
            "000C00140002"
            "6162"
            "0007"
            "618B");
  EXPECT_EQ(RequestBuilder(20).String("abc").Word(7).Frame().ToHex(),
            "000E00140003"
            "61626300"
            "0007"
            "C48E");
}

TEST(RequestBuilderTest, TextTravelsInOneByteACharacter) {
  EXPECT_EQ(RequestBuilder(20).String("\u00D6l\u00B0\u4E16").Frame().ToHex(),
            "000C00140004"
            "D66C"
            "B03F"
            "86CF");
}

TEST(RequestBuilderTest, TheLongestFrameIsBuiltAndALongerOneRefused) {
  const std::string fits(65526, 'x');
  EXPECT_EQ(RequestBuilder(20).String(fits).Frame().Length(), 65534U);
  EXPECT_THROW(RequestBuilder(20).String(fits + "x").Frame(), base::Failure);
  EXPECT_THROW(RequestBuilder(20).String(std::string(65536, 'x')), base::Failure);
}

}  // namespace
}  // namespace korval::client
