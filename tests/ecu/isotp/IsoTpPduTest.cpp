// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "ecu/isotp/IsoTpPdu.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using Type = IsoTpPdu::Type;

constexpr std::size_t kNormal = 8;
constexpr std::size_t kExtended = 7;

std::optional<IsoTpPdu> Read(const ByteBuffer& bytes, std::size_t capacity = kNormal) {
  return IsoTpPdu::Read(bytes.View(), capacity);
}

TEST(IsoTpPduTest, SingleFrameIsReadWithoutItsPadding) {
  const ByteBuffer bytes{0x02, 0x21, 0x01, 0x55, 0x55, 0x55, 0x55, 0x55};
  const auto pdu = Read(bytes);
  ASSERT_TRUE(pdu);
  EXPECT_EQ(pdu->type, Type::kSingle);
  EXPECT_EQ(pdu->length, 2U);
  EXPECT_EQ(base::HexText(pdu->data), "2101");
}

TEST(IsoTpPduTest, FirstFrameHasTwelveBitsOfLength) {
  const ByteBuffer bytes{0x1F, 0xFF, 0x61, 0x01, 0x02, 0x03, 0x04, 0x05};
  const auto pdu = Read(bytes);
  ASSERT_TRUE(pdu);
  EXPECT_EQ(pdu->type, Type::kFirst);
  EXPECT_EQ(pdu->length, 4095U);
  EXPECT_EQ(base::HexText(pdu->data), "610102030405");
}

TEST(IsoTpPduTest, EscapedFirstFrameHas32BitsOfLength) {
  const ByteBuffer bytes{0x10, 0x00, 0x01, 0x02, 0x03, 0x04, 0x61, 0x01};
  const auto pdu = Read(bytes);
  ASSERT_TRUE(pdu);
  EXPECT_EQ(pdu->length, 0x01020304U);
  EXPECT_EQ(base::HexText(pdu->data), "6101");
}

TEST(IsoTpPduTest, ConsecutiveFrameAndFlowControl) {
  const ByteBuffer consecutive{0x2A, 0x11, 0x22};
  auto pdu = Read(consecutive);
  ASSERT_TRUE(pdu);
  EXPECT_EQ(pdu->type, Type::kConsecutive);
  EXPECT_EQ(pdu->sequence, 0x0A);
  EXPECT_EQ(base::HexText(pdu->data), "1122");
  const ByteBuffer flow_control{0x32, 0x08, 0xF5};
  pdu = Read(flow_control);
  ASSERT_TRUE(pdu);
  EXPECT_EQ(pdu->type, Type::kFlowControl);
  EXPECT_EQ(pdu->status, 2);
  EXPECT_EQ(pdu->block_size, 8);
  EXPECT_EQ(pdu->st_min, 0xF5);
}

TEST(IsoTpPduTest, LengthsThatBelongToAnotherTypeAreIgnored) {
  // A single frame of 8 bytes does not fit; behind an address byte neither does one of 7.
  EXPECT_FALSE(Read(ByteBuffer{0x08, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_TRUE(Read(ByteBuffer{0x06, 1, 2, 3, 4, 5, 6}, kExtended));
  EXPECT_FALSE(Read(ByteBuffer{0x07, 1, 2, 3, 4, 5, 6}, kExtended));
  // What fits a single frame is no first frame.
  EXPECT_FALSE(Read(ByteBuffer{0x10, 0x07, 1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(Read(ByteBuffer{0x10, 0x08, 1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(Read(ByteBuffer{0x10, 0x07, 1, 2, 3, 4, 5}, kExtended));
  // What fits 12 bits is not escaped.
  EXPECT_FALSE(Read(ByteBuffer{0x10, 0x00, 0x00, 0x00, 0x0F, 0xFF, 1, 2}));
  EXPECT_TRUE(Read(ByteBuffer{0x10, 0x00, 0x00, 0x00, 0x10, 0x00, 1, 2}));
}

TEST(IsoTpPduTest, FramesCutShortAndUnknownTypesAreIgnored) {
  EXPECT_FALSE(Read(ByteBuffer{}));
  EXPECT_FALSE(Read(ByteBuffer{0x00, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_FALSE(Read(ByteBuffer{0x03, 1, 2}));
  EXPECT_FALSE(Read(ByteBuffer{0x10, 0x14, 1, 2, 3, 4, 5}));
  EXPECT_FALSE(Read(ByteBuffer{0x10, 0x00, 0x00, 0x01}));
  EXPECT_FALSE(Read(ByteBuffer{0x21}));
  EXPECT_FALSE(Read(ByteBuffer{0x30, 0x00}));
  for (unsigned type = 4; type < 16; ++type) {
    EXPECT_FALSE(Read(ByteBuffer{static_cast<std::uint8_t>(type << 4 | 2), 1, 2, 3, 4, 5, 6, 7})) << type;
  }
}

TEST(IsoTpPduTest, WrittenBytesAreTheStandards) {
  const ByteBuffer two{0x21, 0x01};
  EXPECT_EQ(base::HexText(IsoTpPduBytes::Single(two.View()).View()), "022101");
  ByteBuffer message;
  for (int i = 0; i < 20; ++i) message.Append(static_cast<std::uint8_t>(i));
  EXPECT_EQ(base::HexText(IsoTpPduBytes::First(message.View(), kNormal).View()), "1014000102030405");
  EXPECT_EQ(base::HexText(IsoTpPduBytes::First(message.View(), kExtended).View()), "10140001020304");
  message.SetLength(4096);
  EXPECT_EQ(base::HexText(IsoTpPduBytes::First(message.View(), kNormal).View()), "1000000010000001");
  EXPECT_EQ(base::HexText(IsoTpPduBytes::Consecutive(15, two.View()).View()), "2F2101");
  EXPECT_EQ(base::HexText(IsoTpPduBytes::FlowControl(FlowStatus::kContinue, 8, 0x7F).View()), "30087F");
  EXPECT_EQ(base::HexText(IsoTpPduBytes::FlowControl(FlowStatus::kOverflow, 0, 0).View()), "320000");
}

TEST(IsoTpPduTest, SeparationTimeOfEachRange) {
  EXPECT_EQ(SeparationOf(0x00), microseconds(0));
  EXPECT_EQ(SeparationOf(0x01), milliseconds(1));
  EXPECT_EQ(SeparationOf(0x7F), milliseconds(127));
  EXPECT_EQ(SeparationOf(0xF1), microseconds(100));
  EXPECT_EQ(SeparationOf(0xF9), microseconds(900));
  for (const unsigned reserved : {0x80U, 0xF0U, 0xFAU, 0xFFU}) {
    EXPECT_EQ(SeparationOf(static_cast<std::uint8_t>(reserved)), milliseconds(127)) << reserved;
  }
}

TEST(IsoTpPduTest, SeparationTimeAskedForIsNeverShorter) {
  EXPECT_EQ(StMinOf(microseconds(0)), 0x00);
  EXPECT_EQ(StMinOf(microseconds(1)), 0xF1);
  EXPECT_EQ(StMinOf(microseconds(100)), 0xF1);
  EXPECT_EQ(StMinOf(microseconds(101)), 0xF2);
  EXPECT_EQ(StMinOf(microseconds(900)), 0xF9);
  EXPECT_EQ(StMinOf(microseconds(901)), 0x01);
  EXPECT_EQ(StMinOf(milliseconds(127)), 0x7F);
  EXPECT_EQ(StMinOf(milliseconds(128)), 0x7F);
}

}  // namespace
}  // namespace korval::ecu
