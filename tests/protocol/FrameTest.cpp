// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "base/ByteBuffer.h"
#include "protocol/FieldCodec.h"
#include "protocol/Frame.h"
#include "protocol/Reply.h"

namespace korval::protocol {
namespace {

using base::ByteBuffer;

std::string Finished(const char* request, std::int32_t status, const char* data) {
  ByteBuffer frame = ByteBuffer::FromHex(request);
  FinishReply(frame, frame.Word(kCommandOffset), status, ByteBuffer::FromHex(data));
  return frame.ToHex();
}

TEST(Frame, LengthsAreEvenAndAtLeastSix) {
  for (std::size_t length : {6U, 8U, 24U, 65532U, 65534U}) EXPECT_TRUE(IsFrameLength(length)) << length;
  for (std::size_t length : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 9U, 65533U, 65535U})
    EXPECT_FALSE(IsFrameLength(length)) << length;
}

TEST(Frame, BytesAreIncompleteUntilTheLengthFieldIsThereAndAllThatItSays) {
  struct Row {
    const char* bytes;
    bool is_incomplete;
    std::size_t missing;
  };
  const Row rows[] = {{"", true, 0},
                      {"00", true, 0},
                      {"0006", true, 4},
                      {"0006000200", true, 1},
                      {"000600020008", false, 0},
                      {"00060002000800", false, 0},
                      {"FFFE", true, 65532},
                      {"0000", false, 0},
                      {"0004", false, 0},
                      {"0007", false, 0},
                      {"FFFF", false, 0}};
  for (const Row& row : rows) {
    const ByteBuffer bytes = ByteBuffer::FromHex(row.bytes);
    EXPECT_EQ(IsIncomplete(bytes.View()), row.is_incomplete) << row.bytes;
    EXPECT_EQ(MissingBytes(bytes.View()), row.missing) << row.bytes;
  }
}

TEST(Frame, TheChecksumIsTheSumOfTheWordsBeforeItModulo65536) {
  EXPECT_TRUE(IsChecksumValid(ByteBuffer::FromHex("000600020008")));
  EXPECT_TRUE(IsChecksumValid(ByteBuffer::FromHex("0008000D00010016")));
  EXPECT_TRUE(IsChecksumValid(ByteBuffer::FromHex("0008FFFFFFFF0006")));
  EXPECT_FALSE(IsChecksumValid(ByteBuffer::FromHex("000600020009")));
  EXPECT_FALSE(IsChecksumValid(ByteBuffer::FromHex("000600020800")));  // in the wrong byte order
  EXPECT_FALSE(IsChecksumValid(ByteBuffer::FromHex("00060002FFF8")));  // the complement
}

TEST(Frame, BytesBehindTheLengthTakeNoPartInTheChecksum) {
  EXPECT_TRUE(IsChecksumValid(ByteBuffer::FromHex("000600020008FFFF12")));
}

TEST(Frame, TheLongestFrameHasAChecksumToo) {
  ByteBuffer frame;
  frame.SetLength(65534);
  frame.SetWord(0, 65534);
  for (std::size_t offset = 2; offset < 65532; offset += 2) frame.SetWord(offset, 0xFFFF);
  // 0xFFFE, then 32765 words of -1
  frame.SetWord(65532, static_cast<std::uint16_t>(0xFFFE - 32765));
  EXPECT_TRUE(IsChecksumValid(frame));
  frame.SetAt(40000, 0xFE);
  EXPECT_FALSE(IsChecksumValid(frame));
}

TEST(Frame, EveryDamagedBitBehindTheLengthBreaksTheChecksum) {
  const ByteBuffer frame = ByteBuffer::FromHex(
      "000E0014020100024142004E"
      "43B5");
  ASSERT_TRUE(IsChecksumValid(frame));
  for (std::size_t byte = 2; byte < frame.Length(); ++byte) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      ByteBuffer damaged = frame;
      damaged.SetAt(byte, static_cast<std::uint8_t>(damaged.At(byte) ^ 1U << bit));
      EXPECT_FALSE(IsChecksumValid(damaged)) << "byte " << byte << " bit " << bit;
    }
  }
}

TEST(Frame, TheCannedFrameIsACompleteGlobalErrorReplyToCommand115) {
  EXPECT_EQ(kGlobalErrorFrame, "00180073FFFF0001000C476C6F62616C206572726F721B1A");
  const ByteBuffer frame = ByteBuffer::FromHex(kGlobalErrorFrame);
  ASSERT_EQ(frame.Length(), 24U);
  EXPECT_EQ(frame.Word(kLengthOffset), 24);
  EXPECT_EQ(frame.Word(kCommandOffset), 115);
  EXPECT_EQ(frame.Word(kStatusOffset), 0xFFFF);
  std::size_t position = 6;
  EXPECT_EQ(ReadWord(frame.View(), position), 1);
  EXPECT_EQ(ReadString(frame.View(), position), "Global error");
  EXPECT_EQ(ReadWord(frame.View(), position), 0x1B1A);
  EXPECT_TRUE(IsChecksumValid(frame));
}

TEST(Frame, TheParameterAreaLiesBetweenCommandAndChecksum) {
  EXPECT_TRUE(ParameterArea(ByteBuffer::FromHex("000600020008")).empty());
  const ByteBuffer word = ByteBuffer::FromHex("0008000D00010016");
  EXPECT_EQ(base::HexText(ParameterArea(word)), "0001");
  const ByteBuffer longer = ByteBuffer::FromHex("000A000D0001000200190000FFFF");
  EXPECT_EQ(base::HexText(ParameterArea(longer)), "00010002");
}

TEST(Frame, AReplyWithoutDataIsEightBytesLong) {
  EXPECT_EQ(Finished("000600020008", 0, ""), "000800020000000A");
  EXPECT_EQ(Finished("000600320038", 0, ""), "000800320000003A");
}

TEST(Frame, RefusalsCarryTheirStatusOnly) {
  EXPECT_EQ(kNotProcessed, 9027);
  EXPECT_EQ(kUnknownCommand, 22102);
  EXPECT_EQ(kError, 65535);
  EXPECT_EQ(kSuccess, 0);
  EXPECT_EQ(Finished("00060013"
                     "0019",
                     kNotProcessed, ""),
            "000800132343235E");
  EXPECT_EQ(Finished("00060004"
                     "000A",
                     kUnknownCommand, ""),
            "0008000456565662");
}

TEST(Frame, TheStatusIsTheLow16BitsOfWhatTheHandlerReturned) {
  EXPECT_EQ(Finished("000600020008", -1, ""), "00080002FFFF0009");
  EXPECT_EQ(Finished("000600020008", 0x12345678, ""), "0008000256785682");
}

TEST(Frame, AReplyReplacesTheRequestsParametersByItsData) {
  EXPECT_EQ(Finished("00060003"
                     "0009",
                     0, "0001"),
            "000A000300000001000E");                                                           // grows
  EXPECT_EQ(Finished("000C000D0001000200030000", 0, ""), "0008000D00000015");                  // shrinks
  EXPECT_EQ(Finished("000C000D0001000200030000", 0, "AAAABBBB"), "000C000D0000AAAABBBB667E");  // same length
  EXPECT_EQ(Finished("000600020008FFFFFFFFFFFF", 0, ""), "000800020000000A");                  // bytes beyond
}

TEST(Frame, AReplyCarriesItsCommandsCodeWhateverTheBufferHolds) {
  for (const char* held : {"", "00", "000600020008", "00180073FFFF0001000C476C6F62616C206572726F721B1A"}) {
    ByteBuffer frame = ByteBuffer::FromHex(held);
    FinishReply(frame, 14, 0, ByteBuffer::FromHex("0001"));
    EXPECT_EQ(frame.ToHex(), "000A000E000000010019") << held;
  }
}

TEST(Frame, TheIdentifyReplyByteForByte) {
  ByteBuffer data;
  AppendWord(data, 513);
  AppendString(data, "Korval Asap3 server Version 2.0");
  EXPECT_EQ(data.ToHex(), "0201001F4B6F7276616C204173617033207365727665722056657273696F6E20322E3000");
  ByteBuffer frame = ByteBuffer::FromHex("000C00140201000241420000");
  FinishReply(frame, 20, 0, data);
  EXPECT_EQ(frame.ToHex().substr(0, 24),
            "002C0014000002"
            "01001F"
            "4B6F");
  EXPECT_EQ(frame.Length(), 44U);
  EXPECT_TRUE(IsChecksumValid(frame));
}

TEST(Frame, TheLongestReplyFitsTheLengthField) {
  ByteBuffer data;
  data.SetLength(kMaxReplyData);
  ByteBuffer frame = ByteBuffer::FromHex("000600020008");
  FinishReply(frame, 14, 0, data);
  EXPECT_EQ(frame.Length(), 65534U);
  EXPECT_EQ(frame.Word(0), 65534);
  EXPECT_TRUE(IsChecksumValid(frame));
}

}  // namespace
}  // namespace korval::protocol
