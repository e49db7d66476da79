// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "base/ByteBuffer.h"
#include "base/Failure.h"

namespace korval::base {
namespace {

constexpr std::size_t kHuge = std::numeric_limits<std::size_t>::max();

TEST(ByteBuffer, StartsEmpty) {
  const ByteBuffer buffer;
  EXPECT_TRUE(buffer.Empty());
  EXPECT_EQ(buffer.Length(), 0U);
  EXPECT_EQ(buffer.ToHex(), "");
}

TEST(ByteBuffer, HexIsTwoUpperCaseDigitsAByteWithoutSeparators) {
  EXPECT_EQ((ByteBuffer{0x00, 0x0A, 0xF0, 0xFF}).ToHex(), "000AF0FF");
  EXPECT_EQ(HexText(ByteBuffer{0xDE, 0xAD}.View()), "DEAD");
  EXPECT_EQ(ByteBuffer::FromHex("000AF0FF"), (ByteBuffer{0x00, 0x0A, 0xF0, 0xFF}));
  EXPECT_EQ(ByteBuffer::FromHex("dEaD"), (ByteBuffer{0xDE, 0xAD}));
  EXPECT_TRUE(ByteBuffer::FromHex("").Empty());
}

TEST(ByteBuffer, HexCoversEveryByteInBothDirections) {
  ByteBuffer all;
  for (int value = 0; value < 256; ++value) all.Append(static_cast<std::uint8_t>(value));
  EXPECT_EQ(all.ToHex().substr(0, 36), "000102030405060708090A0B0C0D0E0F1011");
  EXPECT_EQ(ByteBuffer::FromHex(all.ToHex()), all);
}

TEST(ByteBuffer, BadHexIsRefused) {
  for (const char* text : {"0", "000", "0G", "g0", " 00", "00 ", "0 0", "0x00", "-1", "+1", "\xC3\xA9"})
    EXPECT_THROW(ByteBuffer::FromHex(text), Failure) << text;
  EXPECT_THROW(ByteBuffer::FromHex(std::string_view("0\0", 2)), Failure);
}

TEST(ByteBuffer, GrowsWithZeroBytesAlsoAfterACut) {
  ByteBuffer buffer{0x11, 0x22, 0x33};
  buffer.SetLength(1);
  buffer.SetLength(4);
  EXPECT_EQ(buffer, (ByteBuffer{0x11, 0x00, 0x00, 0x00}));
}

TEST(ByteBuffer, WordsAreBigEndianInBothDirections) {
  ByteBuffer buffer{0x12, 0x34, 0xFF, 0xFE};
  EXPECT_EQ(buffer.Word(0), 0x1234);
  EXPECT_EQ(buffer.Word(1), 0x34FF);
  EXPECT_EQ(buffer.Word(2), 0xFFFE);
  buffer.SetWord(1, 0xABCD);
  EXPECT_EQ(buffer, (ByteBuffer{0x12, 0xAB, 0xCD, 0xFE}));
}

TEST(ByteBuffer, AccessOutsideIsAFailureAndChangesNothing) {
  ByteBuffer buffer{0x12, 0x34};
  EXPECT_THROW(buffer.At(2), Failure);
  EXPECT_THROW(buffer.At(kHuge), Failure);
  EXPECT_THROW(buffer.SetAt(2, 1), Failure);
  EXPECT_THROW(buffer.Word(1), Failure);
  EXPECT_THROW(buffer.Word(kHuge), Failure);
  EXPECT_THROW(buffer.Word(kHuge - 1), Failure);
  EXPECT_THROW(buffer.SetWord(1, 1), Failure);
  EXPECT_THROW(buffer.View(0, 3), Failure);
  EXPECT_THROW(buffer.View(3, 0), Failure);
  EXPECT_THROW(buffer.View(1, kHuge), Failure);
  EXPECT_THROW(buffer.View(kHuge, 2), Failure);
  EXPECT_THROW(buffer.Insert(3, ByteBuffer{0x01}.View()), Failure);
  EXPECT_THROW(ByteBuffer().Word(0), Failure);
  EXPECT_EQ(buffer, (ByteBuffer{0x12, 0x34}));
}

TEST(ByteBuffer, ViewsTakeASubRangeTheEmptyOneAtTheEndIncluded) {
  const ByteBuffer buffer{0x01, 0x02, 0x03};
  EXPECT_EQ(ByteBuffer(buffer.View(1, 2)), (ByteBuffer{0x02, 0x03}));
  EXPECT_TRUE(buffer.View(3, 0).empty());
}

TEST(ByteBuffer, InsertsBeforeAnOffsetUpToTheLength) {
  ByteBuffer buffer{0x01, 0x04};
  buffer.Insert(1, ByteBuffer{0x02, 0x03}.View());
  buffer.Insert(4, ByteBuffer{0x05}.View());
  buffer.Insert(0, ByteBuffer{0x00}.View());
  buffer.Insert(3, ByteView());
  EXPECT_EQ(buffer, (ByteBuffer{0x00, 0x01, 0x02, 0x03, 0x04, 0x05}));
}

TEST(ByteBuffer, BitsCountFromTheMostSignificantBitOfByteZero) {
  const ByteBuffer buffer{0xA5, 0x0F};  // 1010 0101 0000 1111
  EXPECT_EQ(buffer.Bits(0, 1), 1U);
  EXPECT_EQ(buffer.Bits(1, 1), 0U);
  EXPECT_EQ(buffer.Bits(0, 3), 5U);
  EXPECT_EQ(buffer.Bits(6, 4), 4U);
  EXPECT_EQ(buffer.Bits(12, 4), 15U);
  EXPECT_EQ(buffer.Bits(0, 16), 0xA50FU);
}

TEST(ByteBuffer, SixtyFourBitsOfAnyAlignmentAreReadAndWritten) {
  ByteBuffer buffer;
  buffer.SetLength(9);
  buffer.SetBits(4, 64, 0x0123456789ABCDEFU);
  EXPECT_EQ(buffer, (ByteBuffer{0x00, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}));
  EXPECT_EQ(buffer.Bits(4, 64), 0x0123456789ABCDEFU);
}

TEST(ByteBuffer, WritingBitsLeavesTheirNeighbours) {
  ByteBuffer buffer{0xFF, 0xFF};
  buffer.SetBits(6, 4, 0);
  EXPECT_EQ(buffer, (ByteBuffer{0xFC, 0x3F}));
  buffer.SetBits(7, 1, 1);
  EXPECT_EQ(buffer, (ByteBuffer{0xFD, 0x3F}));
}

TEST(ByteBuffer, OnlyTheLowBitsOfAValueAreWritten) {
  ByteBuffer buffer{0x00, 0x00};
  buffer.SetBits(4, 4, 0xFFFF);
  EXPECT_EQ(buffer, (ByteBuffer{0x0F, 0x00}));
}

TEST(ByteBuffer, BitsOutsideAreAFailure) {
  ByteBuffer buffer{0x00, 0x00};
  EXPECT_THROW(buffer.Bits(9, 8), Failure);
  EXPECT_THROW(buffer.Bits(16, 1), Failure);
  EXPECT_THROW(buffer.Bits(kHuge, 8), Failure);
  EXPECT_THROW(buffer.Bits(kHuge - 7, 8), Failure);
  EXPECT_THROW(buffer.SetBits(9, 8, 0), Failure);
  EXPECT_THROW(buffer.SetBits(kHuge - 7, 8, 0xFF), Failure);
  EXPECT_EQ(buffer, (ByteBuffer{0x00, 0x00}));
}

}  // namespace
}  // namespace korval::base
