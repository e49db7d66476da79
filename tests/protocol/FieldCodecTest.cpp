// SPDX-License-Identifier: MIT
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "base/ByteBuffer.h"
#include "base/Failure.h"
#include "protocol/FieldCodec.h"

namespace korval::protocol {
namespace {

using base::ByteBuffer;

template <typename Append, typename Value>
std::string Appended(Append append, Value value) {
  ByteBuffer reply;
  append(reply, value);
  return reply.ToHex();
}

TEST(FieldCodec, WordsAreTwoBytesBigEndianInBothDirections) {
  const struct {
    std::int32_t value;
    const char* bytes;
  } rows[] = {{0, "0000"}, {1, "0001"}, {513, "0201"}, {0x1234, "1234"}, {0x8000, "8000"}, {65535, "FFFF"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Appended(AppendWord, row.value), row.bytes);
    const ByteBuffer area = ByteBuffer::FromHex(row.bytes);
    std::size_t position = 0;
    EXPECT_EQ(ReadWord(area.View(), position), row.value);
    EXPECT_EQ(position, 2U);
  }
}

TEST(FieldCodec, OnlyTheLow16BitsOfAWordAreWritten) {
  EXPECT_EQ(Appended(AppendWord, 0x12345678), "5678");
  EXPECT_EQ(Appended(AppendWord, -1), "FFFF");
  EXPECT_EQ(Appended(AppendWord, 65536), "0000");
}

TEST(FieldCodec, RealsAreBigEndianSinglesInBothDirections) {
  const struct {
    float value;
    const char* bytes;
  } rows[] = {{0.0F, "00000000"},
              {-0.0F, "80000000"},
              {1.0F, "3F800000"},
              {-1.0F, "BF800000"},
              {12.5F, "41480000"},
              {0.1F, "3DCCCCCD"},
              {std::numeric_limits<float>::max(), "7F7FFFFF"},
              {std::numeric_limits<float>::denorm_min(), "00000001"},
              {std::numeric_limits<float>::infinity(), "7F800000"},
              {-std::numeric_limits<float>::infinity(), "FF800000"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Appended(AppendReal, row.value), row.bytes);
    const ByteBuffer area = ByteBuffer::FromHex(row.bytes);
    std::size_t position = 0;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(ReadReal(area.View(), position)),
              std::bit_cast<std::uint32_t>(row.value));
    EXPECT_EQ(position, 4U);
  }
}

TEST(FieldCodec, Real8sAreBigEndianDoublesInBothDirections) {
  const struct {
    double value;
    const char* bytes;
  } rows[] = {{0.0, "0000000000000000"},
              {-0.0, "8000000000000000"},
              {1.0, "3FF0000000000000"},
              {-2.0, "C000000000000000"},
              {12.5, "4029000000000000"},
              {0.1, "3FB999999999999A"},
              {std::numeric_limits<double>::max(), "7FEFFFFFFFFFFFFF"},
              {std::numeric_limits<double>::denorm_min(), "0000000000000001"},
              {std::numeric_limits<double>::infinity(), "7FF0000000000000"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Appended(AppendReal8, row.value), row.bytes);
    const ByteBuffer area = ByteBuffer::FromHex(row.bytes);
    std::size_t position = 0;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(ReadReal8(area.View(), position)),
              std::bit_cast<std::uint64_t>(row.value));
    EXPECT_EQ(position, 8U);
  }
}

TEST(FieldCodec, NotANumberPassesWithItsBits) {
  for (const char* bytes : {"7FC00000", "FFC12345", "7FFFFFFF", "FF000000"}) {
    const ByteBuffer area = ByteBuffer::FromHex(bytes);
    std::size_t position = 0;
    EXPECT_EQ(Appended(AppendReal, ReadReal(area.View(), position)), bytes);
  }
  const ByteBuffer area = ByteBuffer::FromHex("7FF8000000012345");
  std::size_t position = 0;
  EXPECT_EQ(Appended(AppendReal8, ReadReal8(area.View(), position)), "7FF8000000012345");
}

TEST(FieldCodec, StringsAreCountedCharactersWithAFillByteWhenOdd) {
  const struct {
    const char* text;
    const char* bytes;
  } rows[] = {{"", "0000"},
              {"A", "00014100"},
              {"AB", "00024142"},
              {"ABC", "000341424300"},
              {"\xC2\xB0"
               "C",
               "0002B043"},                  // one byte a character
              {"\xE2\x82\xAC", "00018000"},  // the euro sign
              {"a\r\n", "0003610D0A00"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Appended(AppendString, row.text), row.bytes);
    const ByteBuffer area = ByteBuffer::FromHex(row.bytes);
    std::size_t position = 0;
    EXPECT_EQ(ReadString(area.View(), position), row.text);
    EXPECT_EQ(position, area.Length());
  }
}

TEST(FieldCodec, AStringMayHoldNul) {
  EXPECT_EQ(Appended(AppendString, std::string("a\0", 2)), "00026100");
  const ByteBuffer area = ByteBuffer::FromHex("00026100");
  std::size_t position = 0;
  EXPECT_EQ(ReadString(area.View(), position), std::string("a\0", 2));
}

TEST(FieldCodec, ACharacterWithoutAPlaceIsWrittenAsAQuestionMark) {
  EXPECT_EQ(Appended(AppendString,
                     "\xCE\xA9"
                     "1"),
            "00023F31");
}

TEST(FieldCodec, TheFillByteOfAReadStringMayBeAnything) {
  const ByteBuffer area = ByteBuffer::FromHex("000141FF0007");
  std::size_t position = 0;
  EXPECT_EQ(ReadString(area.View(), position), "A");
  EXPECT_EQ(ReadWord(area.View(), position), 7);
}

TEST(FieldCodec, FieldsFollowEachOtherWithoutSeparators) {
  ByteBuffer reply;
  AppendWord(reply, 513);
  AppendString(reply, "ABC");
  AppendReal(reply, 1.0F);
  AppendReal8(reply, 1.0);
  AppendString(reply, "");
  AppendWord(reply, 9);
  EXPECT_EQ(reply.ToHex(),
            "0201"
            "000341424300"
            "3F800000"
            "3FF0000000000000"
            "0000"
            "0009");
  std::size_t position = 0;
  EXPECT_EQ(ReadWord(reply.View(), position), 513);
  EXPECT_EQ(ReadString(reply.View(), position), "ABC");
  EXPECT_EQ(position, 8U);
  EXPECT_EQ(ReadReal(reply.View(), position), 1.0F);
  EXPECT_EQ(ReadReal8(reply.View(), position), 1.0);
  EXPECT_EQ(ReadString(reply.View(), position), "");
  EXPECT_EQ(ReadWord(reply.View(), position), 9);
  EXPECT_EQ(position, reply.Length());
}

TEST(FieldCodec, AFieldThatIsNotWhollyThereFailsAndKeepsThePosition) {
  const ByteBuffer area = ByteBuffer::FromHex("0000000000000000");
  for (std::size_t start : {7U, 8U, 9U, 1000U}) {
    std::size_t position = start;
    EXPECT_THROW(ReadWord(area.View(), position), base::Failure) << start;
    EXPECT_EQ(position, start);
  }
  for (std::size_t start : {5U, 6U, 8U}) {
    std::size_t position = start;
    EXPECT_THROW(ReadReal(area.View(), position), base::Failure) << start;
    EXPECT_EQ(position, start);
  }
  for (std::size_t start : {1U, 6U, 8U}) {
    std::size_t position = start;
    EXPECT_THROW(ReadReal8(area.View(), position), base::Failure) << start;
    EXPECT_EQ(position, start);
  }
  std::size_t huge = std::numeric_limits<std::size_t>::max();
  EXPECT_THROW(ReadReal8(area.View(), huge), base::Failure);
  EXPECT_THROW(ReadString(area.View(), huge), base::Failure);
}

TEST(FieldCodec, NothingIsReadFromAnAbsentParameterArea) {
  std::size_t position = 0;
  EXPECT_THROW(ReadWord({}, position), base::Failure);
  EXPECT_THROW(ReadReal({}, position), base::Failure);
  EXPECT_THROW(ReadReal8({}, position), base::Failure);
  EXPECT_THROW(ReadString({}, position), base::Failure);
  EXPECT_EQ(position, 0U);
}

TEST(FieldCodec, AStringLengthThatLiesFailsAndKeepsThePosition) {
  for (const char* bytes : {"00", "0001", "000141", "0003414243", "000541424344", "FFFF4142", "FFFE4142"}) {
    const ByteBuffer area = ByteBuffer::FromHex(bytes);
    std::size_t position = 0;
    EXPECT_THROW(ReadString(area.View(), position), base::Failure) << bytes;
    EXPECT_EQ(position, 0U) << bytes;
  }
}

TEST(FieldCodec, ALongTextIsCutAtTheLongestString) {
  ByteBuffer reply;
  AppendString(reply, std::string(70000, 'x'));
  EXPECT_EQ(reply.Word(0), 65534);
  EXPECT_EQ(reply.Length(), 2U + 65534U);
  EXPECT_EQ(reply.At(reply.Length() - 1), 'x');
}

TEST(FieldCodec, TheLongestStringIsReadBack) {
  ByteBuffer area;
  AppendString(area, std::string(65534, 'x'));
  std::size_t position = 0;
  EXPECT_EQ(ReadString(area.View(), position), std::string(65534, 'x'));
  EXPECT_EQ(position, 65536U);
}

}  // namespace
}  // namespace korval::protocol
