// SPDX-License-Identifier: MIT
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "base/XmlFile.h"
#include "ecu/description/ItemCoding.h"
#include "ecu/description/ItemEncoding.h"
#include "ecu/ecufile/ItemReader.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;
using base::Variant;

ItemDescription Item(const std::string& attributes, const std::string& texts = "") {
  const auto document =
      base::LoadXmlText("<DataItem Name='V' " + attributes + ">" + texts + "</DataItem>", "item");
  auto item = ReadDataItem(document->document_element());
  EXPECT_TRUE(item.has_value()) << attributes;
  return item.value_or(ItemDescription{});
}

struct Row {
  std::string what;
  std::string attributes;
  std::string message;
  Variant value;
  std::string text;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.what; }

class CodingTest : public testing::TestWithParam<Row> {};

TEST_P(CodingTest, DecodesTheBytes) {
  const Row& row = GetParam();
  const ItemDescription item = Item(row.attributes);
  const ByteBuffer message = ByteBuffer::FromHex(row.message);
  EXPECT_EQ(DecodeItem(item, message.View()), row.value);
  EXPECT_EQ(DecodeText(item, message.View()), row.text);
}

TEST_P(CodingTest, EncodesTheSameBytesOverZeros) {
  const Row& row = GetParam();
  const ByteBuffer expected = ByteBuffer::FromHex(row.message);
  ByteBuffer message;
  message.SetLength(expected.Length());
  EncodeItem(Item(row.attributes), row.value, message);
  EXPECT_EQ(message.ToHex(), row.message);
}

TEST_P(CodingTest, EncodesTheTextLikeTheValue) {
  const Row& row = GetParam();
  ByteBuffer message;
  message.SetLength(row.message.size() / 2);
  EncodeText(Item(row.attributes), row.text, message);
  EXPECT_EQ(message.ToHex(), row.message);
}

TEST_P(CodingTest, LeavesTheOtherBitsAlone) {
  const Row& row = GetParam();
  const ItemDescription item = Item(row.attributes);
  ByteBuffer message;
  message.SetLength(row.message.size() / 2);
  for (std::size_t i = 0; i < message.Length(); ++i) message.SetAt(i, 0xFF);
  ByteBuffer inverse = message;
  EncodeItem(item, row.value, message);
  for (std::size_t bit = 0; bit < message.Length() * 8; ++bit) {
    const bool inside = bit >= item.first_bit && bit < item.first_bit + item.bits;
    if (!inside) {
      EXPECT_EQ(message.Bits(bit, 1), 1U) << "bit " << bit;
    }
  }
  EXPECT_EQ(DecodeItem(item, message.View()), row.value);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CodingTest,
    testing::Values(
        Row{"byte", "FirstByte='3'", "00007F", std::int32_t{127}, "127"},
        Row{"word, big endian", "FirstByte='2' BitsCount='16'", "001234", std::int32_t{0x1234}, "4660"},
        Row{"word, little endian", "FirstByte='2' BitsCount='16' ByteOrder='little'", "003412",
            std::int32_t{0x1234}, "4660"},
        Row{"24 bits, little endian", "FirstByte='1' BitsCount='24' ByteOrder='little'", "563412",
            std::int32_t{0x123456}, "1193046"},
        Row{"12 bits from a byte's start", "FirstByte='1' BitsCount='12'", "ABC0", std::int32_t{0xABC},
            "2748"},
        Row{"12 bits from a nibble", "FirstByte='1' BitOffset='4' BitsCount='12'", "0ABC",
            std::int32_t{0xABC}, "2748"},
        Row{"3 bits inside a byte", "FirstByte='1' BitOffset='2' BitsCount='3'", "28", std::int32_t{5}, "5"},
        Row{"10 bits over three bytes", "FirstByte='1' BitOffset='7' BitsCount='10'", "01FF80",
            std::int32_t{1023}, "1023"},
        Row{"largest whole number that a single has", "FirstByte='1' BitsCount='32'", "01000000",
            std::int32_t{16777216}, "16777216"},
        Row{"one more, which it has not", "FirstByte='1' BitsCount='32'", "01000001", 16777217.0, "16777217"},
        Row{"two more, which it has", "FirstByte='1' BitsCount='32'", "01000002", std::int32_t{16777218},
            "16777218"},
        Row{"negative, which a single has not", "FirstByte='1' BitsCount='32' Coding='signed'", "FEFFFFFF",
            -16777217.0, "-16777217"},
        Row{"largest Int32 that a single has", "FirstByte='1' BitsCount='32'", "7FFFFF80",
            std::int32_t{2147483520}, "2147483520"},
        Row{"31 bits", "FirstByte='1' BitsCount='32'", "7FFFFFFF", 2147483647.0, "2147483647"},
        Row{"one more than Int32", "FirstByte='1' BitsCount='32'", "80000000", 2147483648.0, "2147483648"},
        Row{"64 bits over nine bytes", "FirstByte='1' BitOffset='4' BitsCount='64'", "080000000000000000",
            9223372036854775808.0, "9.223372036854776E+18"},
        Row{"signed byte", "FirstByte='1' Coding='signed'", "FF", std::int32_t{-1}, "-1"},
        Row{"signed 12 bits", "FirstByte='1' BitsCount='12' Coding='signed'", "8000", std::int32_t{-2048},
            "-2048"},
        Row{"signed word, little endian", "FirstByte='1' BitsCount='16' Coding='signed' ByteOrder='little'",
            "9CFF", std::int32_t{-100}, "-100"},
        Row{"smallest Int32", "FirstByte='1' BitsCount='32' Coding='signed'", "80000000",
            std::numeric_limits<std::int32_t>::min(), "-2147483648"},
        Row{"less than Int32", "FirstByte='1' BitsCount='40' Coding='signed'", "FF7FFFFFFF", -2147483649.0,
            "-2147483649"},
        Row{"smallest of 64 bits", "FirstByte='1' BitsCount='64' Coding='signed'", "8000000000000000",
            -9223372036854775808.0, "-9.223372036854776E+18"},
        Row{"scaled", "FirstByte='1' BitsCount='16' Step='0.25'", "0C80", 800.0, "800"},
        Row{"with an offset alone", "FirstByte='1' Offset='-40'", "82", 90.0, "90"},
        Row{"a step without a binary fraction", "FirstByte='1' BitsCount='16' Step='0.01'", "0562", 13.78,
            "13.78"},
        Row{"a step above 1", "FirstByte='1' Step='10' Offset='600'", "19", 850.0, "850"},
        Row{"a negative step", "FirstByte='1' Step='-0.5'", "03", -1.5, "-1.5"},
        Row{"signed and scaled", "FirstByte='1' BitsCount='16' Coding='signed' Step='0.1'", "FF9C", -10.0,
            "-10"},
        Row{"float", "FirstByte='1' BitsCount='32' Coding='float'", "3FC00000", 1.5F, "1.5"},
        Row{"float, little endian", "FirstByte='1' BitsCount='32' Coding='float' ByteOrder='little'",
            "0000C03F", 1.5F, "1.5"},
        Row{"float off the byte's start", "FirstByte='1' BitOffset='4' BitsCount='32' Coding='float'",
            "03FC000000", 1.5F, "1.5"},
        Row{"scaled float", "FirstByte='1' BitsCount='32' Coding='float' Step='2'", "3FC00000", 3.0, "3"},
        Row{"double", "FirstByte='1' BitsCount='64' Coding='float'", "3FB999999999999A", 0.1, "0.1"},
        Row{"double, little endian", "FirstByte='1' BitsCount='64' Coding='float' ByteOrder='little'",
            "9A9999999999B93F", 0.1, "0.1"},
        Row{"boolean true", "FirstByte='1' BitOffset='7' BitsCount='1' Coding='boolean'", "01", true, "True"},
        Row{"boolean false", "FirstByte='1' BitsCount='1' Coding='boolean'", "00", false, "False"},
        Row{"ascii", "FirstByte='2' BitsCount='24' Coding='ascii'", "00414243", "ABC", "ABC"},
        Row{"ascii outside ASCII", "FirstByte='1' BitsCount='16' Coding='ascii'", "B043", "\u00B0C",
            "\u00B0C"},
        Row{"bytes", "FirstByte='1' BitsCount='32' Coding='bytes'", "A517C042", "A517C042", "A517C042"},
        Row{"more than 64 bits of bytes", "FirstByte='1' BitsCount='72' Coding='bytes'", "010203040506070809",
            "010203040506070809", "010203040506070809"},
        Row{"bcd", "FirstByte='1' BitsCount='32' Coding='bcd'", "20260315", 20260315.0, "20260315"},
        Row{"bcd, little endian", "FirstByte='1' BitsCount='16' Coding='bcd' ByteOrder='little'", "3412",
            std::int32_t{1234}, "1234"},
        Row{"scaled bcd", "FirstByte='1' BitsCount='16' Coding='bcd' Step='0.1'", "1234", 123.4, "123.4"}));

TEST(ItemCodingTest, TextOfTheRawValueNamesIt) {
  const ItemDescription item = Item("FirstByte='1' BitOffset='6' BitsCount='2'",
                                    "<Text Value='0'>stopped</Text><Text Value='2'>running</Text>");
  EXPECT_EQ(DecodeText(item, ByteBuffer{0x02}.View()), "running");
  EXPECT_EQ(DecodeText(item, ByteBuffer{0x01}.View()), "1");
  ByteBuffer message{0xFC};
  EncodeText(item, "running", message);
  EXPECT_EQ(message.ToHex(), "FE");
  EncodeText(item, "3", message);
  EXPECT_EQ(message.ToHex(), "FF");
}

TEST(ItemCodingTest, TextNamesTheRawValueOfScaledSignedAndBcdItems) {
  const std::string text = "<Text Value='-1'>invalid</Text><Text Value='12'>twelve</Text>";
  const ItemDescription scaled = Item("FirstByte='1' Coding='signed' Step='0.5'", text);
  EXPECT_EQ(DecodeText(scaled, ByteBuffer{0xFF}.View()), "invalid");
  const ItemDescription bcd = Item("FirstByte='1' Coding='bcd'", text);
  EXPECT_EQ(DecodeText(bcd, ByteBuffer{0x12}.View()), "twelve");
  ByteBuffer message{0x00};
  EncodeText(scaled, "invalid", message);
  EXPECT_EQ(message.ToHex(), "FF");
  EncodeText(bcd, "twelve", message);
  EXPECT_EQ(message.ToHex(), "12");
}

TEST(ItemCodingTest, AsciiLosesTrailingBlanksAndNulsOnlyAndIsFilledWithBlanks) {
  const ItemDescription item = Item("FirstByte='1' BitsCount='48' Coding='ascii'");
  EXPECT_EQ(DecodeItem(item, ByteBuffer::FromHex("204100422000").View()), Variant(std::string(" A\0B", 4)));
  EXPECT_EQ(DecodeItem(item, ByteBuffer::FromHex("000000000000").View()), Variant(""));
  ByteBuffer message = ByteBuffer::FromHex("FFFFFFFFFFFF");
  EncodeItem(item, "AB", message);
  EXPECT_EQ(message.ToHex(), "414220202020");
}

TEST(ItemCodingTest, MessageThatDoesNotReachTheItemHasNoValue) {
  for (const char* attributes :
       {"FirstByte='2' BitsCount='16'", "FirstByte='2' BitsCount='16' Coding='ascii'",
        "FirstByte='2' BitsCount='16' Coding='bytes'", "FirstByte='3' BitsCount='1' Coding='boolean'"}) {
    const ItemDescription item = Item(attributes, "<Text Value='0'>zero</Text>");
    EXPECT_TRUE(DecodeItem(item, ByteBuffer{0x61, 0x00}.View()).IsEmpty()) << attributes;
    EXPECT_EQ(DecodeText(item, ByteBuffer{0x61, 0x00}.View()), "") << attributes;
    EXPECT_TRUE(DecodeItem(item, {}).IsEmpty()) << attributes;
  }
}

TEST(ItemCodingTest, DigitThatIsNoneLeavesBcdWithoutValue) {
  const ItemDescription item = Item("FirstByte='1' BitsCount='16' Coding='bcd'");
  EXPECT_TRUE(DecodeItem(item, ByteBuffer{0x12, 0x3A}.View()).IsEmpty());
  EXPECT_EQ(DecodeText(item, ByteBuffer{0x12, 0x3A}.View()), "");
}

TEST(ItemCodingTest, BooleanTakesWordsAndNumbersAndOfManyBitsAnyIsTrue) {
  const ItemDescription item = Item("FirstByte='1' BitsCount='4' Coding='boolean'");
  EXPECT_EQ(DecodeItem(item, ByteBuffer{0x40}.View()), Variant(true));
  ByteBuffer message{0x0F};
  for (const Variant& value : {Variant(true), Variant("True"), Variant(-1.0), Variant(7), Variant("1")}) {
    message = {0x0F};
    EncodeItem(item, value, message);
    EXPECT_EQ(message.ToHex(), "1F") << value.ToText();
  }
  EncodeItem(item, "False", message);
  EXPECT_EQ(message.ToHex(), "0F");
}

TEST(ItemCodingTest, ValueIsRoundedToTheNearestStep) {
  const ItemDescription item = Item("FirstByte='1' Step='0.5'");
  ByteBuffer message{0x00};
  EncodeItem(item, 1.7, message);
  EXPECT_EQ(message.ToHex(), "03");
  EncodeItem(item, 1.8F, message);
  EXPECT_EQ(message.ToHex(), "04");
}

// A limit is taken with what its type and the division by the step leave of it.
TEST(ItemCodingTest, LimitOfTheRangeIsTakenThroughTheNoiseOfFloatingPoint) {
  struct Limit {
    const char* attributes;
    Variant value;
    const char* message;
  };
  for (const Limit& limit :
       {Limit{"FirstByte='1' Step='0.1'", 25.5, "FF"}, Limit{"FirstByte='1' Step='0.1'", 25.5F, "FF"},
        Limit{"FirstByte='1' BitsCount='6' Step='0.1'", 6.3F, "FC"},
        Limit{"FirstByte='1' Step='0.1' Offset='0.1'", 25.6, "FF"},
        Limit{"FirstByte='1' Step='0.01' Offset='-40.7'", -40.7F, "00"},
        Limit{"FirstByte='1' Step='0.01' Offset='-40.7'", -38.15F, "FF"},
        Limit{"FirstByte='1' Step='0.1'", 0.1 + 0.2 - 0.3, "00"},
        Limit{"FirstByte='1' Step='0.1'", 0.3 - 0.1 - 0.2, "00"},
        Limit{"FirstByte='1' Step='0.1'", "25.5", "FF"}, Limit{"FirstByte='1'", 254.5, "FF"},
        Limit{"FirstByte='1' BitsCount='24' Step='0.1'", 1677721.5F, "FFFFFF"}}) {
    const ItemDescription item = Item(limit.attributes);
    ByteBuffer message;
    message.SetLength(item.BytesNeeded());
    EncodeItem(item, limit.value, message);
    EXPECT_EQ(message.ToHex(), limit.message) << limit.attributes << " " << limit.value.ToText();
  }
}

struct Refusal {
  std::string what;
  std::string attributes;
  Variant value;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.what; }

class RefusalTest : public testing::TestWithParam<Refusal> {};

TEST_P(RefusalTest, IsNumbered2012NamesTheItemAndChangesNothing) {
  ByteBuffer message = ByteBuffer::FromHex("0123456789ABCDEF");
  try {
    EncodeItem(Item(GetParam().attributes), GetParam().value, message);
    ADD_FAILURE() << "taken";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), kValueRefused);
    EXPECT_THAT(failure.Description(), testing::StartsWith("V: "));
  }
  EXPECT_EQ(message.ToHex(), "0123456789ABCDEF");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RefusalTest,
    testing::Values(
        Refusal{"above the byte", "FirstByte='1'", 256}, Refusal{"below 0", "FirstByte='1'", -1},
        Refusal{"above the signed byte", "FirstByte='1' Coding='signed'", 128},
        Refusal{"below the signed byte", "FirstByte='1' Coding='signed'", -129},
        Refusal{"less than a step below 0", "FirstByte='1' Step='10'", -1},
        Refusal{"the same as a single", "FirstByte='1' Step='10'", -0.001F},
        Refusal{"less than half a step above", "FirstByte='1' Step='0.1'", 25.54},
        Refusal{"half a step above", "FirstByte='1' Step='0.1'", 25.55},
        Refusal{"a fraction above the byte", "FirstByte='1'", 255.25F},
        Refusal{"a fraction below the signed byte", "FirstByte='1' Coding='signed'", -128.25},
        Refusal{"a fraction above 32 bits", "FirstByte='1' BitsCount='32'", 4294967295.25},
        Refusal{"32 bits and 1, as a single", "FirstByte='1' BitsCount='32'", 4294967296.0F},
        Refusal{"above the scaled range", "FirstByte='1' BitsCount='6' Step='10' Offset='600'", 1240},
        Refusal{"more than the bcd digits", "FirstByte='1' Coding='bcd'", 100},
        Refusal{"more than a cut bcd digit", "FirstByte='1' BitOffset='1' BitsCount='7' Coding='bcd'", 80},
        Refusal{"above 64 bits", "FirstByte='1' BitsCount='64'", 1.9E19},
        Refusal{"text for a number", "FirstByte='1'", "fast"},
        Refusal{"empty text for a number", "FirstByte='1'", ""},
        Refusal{"no value", "FirstByte='1'", Variant()},
        Refusal{"null for ascii", "FirstByte='1' Coding='ascii'", base::Null{}},
        Refusal{"not a number", "FirstByte='1'", std::numeric_limits<double>::quiet_NaN()},
        Refusal{"not a number for a boolean", "FirstByte='1' Coding='boolean'",
                std::numeric_limits<double>::quiet_NaN()},
        Refusal{"infinity", "FirstByte='1' BitsCount='64' Coding='float'",
                std::numeric_limits<double>::infinity()},
        Refusal{"too large for a float", "FirstByte='1' BitsCount='32' Coding='float'", 1E39},
        Refusal{"overflow of the step", "FirstByte='1' BitsCount='64' Coding='float' Step='1E-10'", 1E305},
        Refusal{"text too long", "FirstByte='1' BitsCount='16' Coding='ascii'", "ABC"},
        Refusal{"too few bytes", "FirstByte='1' BitsCount='16' Coding='bytes'", "01"},
        Refusal{"too many bytes", "FirstByte='1' BitsCount='16' Coding='bytes'", "010203"},
        Refusal{"odd digits", "FirstByte='1' BitsCount='16' Coding='bytes'", "012"},
        Refusal{"no digits", "FirstByte='1' BitsCount='16' Coding='bytes'", "01ZZ"}));

TEST(ItemCodingTest, TextThatNamesMoreThanTheBitsHoldIsRefused) {
  const ItemDescription item = Item("FirstByte='1' BitsCount='2'", "<Text Value='4'>four</Text>");
  ByteBuffer message{0x00};
  EXPECT_THROW(EncodeText(item, "four", message), base::Failure);
  EXPECT_EQ(message.ToHex(), "00");
}

TEST(ItemCodingTest, ClampedValueIsTheNearestThatFits) {
  ByteBuffer message{0x00, 0x00, 0x00, 0x00};
  EncodeClamped(Item("FirstByte='1' Coding='signed'"), -1000, message);
  EXPECT_EQ(message.ToHex(), "80000000");
  EncodeClamped(Item("FirstByte='2'"), 1000, message);
  EXPECT_EQ(message.ToHex(), "80FF0000");
  EncodeClamped(Item("FirstByte='1' BitsCount='32' Coding='float'"), 1E300, message);
  EXPECT_EQ(message.ToHex(), "7F7FFFFF");
  EncodeClamped(Item("FirstByte='3' Step='10' Offset='600'"), 0, message);
  EXPECT_EQ(message.ToHex(), "7F7F00FF");
}

// Intel signals of DBC files start at any bit, counted from the least significant of byte 1.
TEST(ItemCodingTest, LittleEndianItemsAtAnyBitAreDecodedAndEncodedWithoutTouchingTheOthers) {
  struct Place {
    std::size_t first_bit;
    std::size_t bits;
    const char* message;
    std::int32_t value;
  };
  for (const Place& place :
       {Place{0, 1, "01", 1}, Place{7, 1, "80", 1}, Place{3, 4, "28", 5}, Place{4, 8, "F00F", 255},
        Place{21, 3, "0000A0", 5}, Place{12, 20, "0030E12D", 0x2DE13}, Place{1, 30, "56341200", 0x91A2B}}) {
    ItemDescription item;
    item.name = "V";
    item.little_endian = true;
    item.first_bit = place.first_bit;
    item.bits = place.bits;
    const ByteBuffer message = ByteBuffer::FromHex(place.message);
    EXPECT_EQ(DecodeItem(item, message.View()), Variant(place.value)) << place.message;
    ByteBuffer zeros;
    zeros.SetLength(message.Length());
    EncodeItem(item, Variant(place.value), zeros);
    EXPECT_EQ(zeros, message) << place.message;
    ByteBuffer ones;
    while (ones.Length() < message.Length()) ones.Append(std::uint8_t{0xFF});
    EncodeItem(item, Variant(0), ones);
    EXPECT_EQ(DecodeItem(item, ones.View()), Variant(0));
    EncodeItem(item, Variant(place.value), ones);
    for (std::size_t i = 0; i < ones.Length(); ++i) ones.SetAt(i, ones.At(i) | message.At(i));
    EXPECT_EQ(DecodeItem(item, ones.View()), Variant(place.value));
  }
}

TEST(ItemCodingTest, LittleEndianItemOf64BitsMaySpanNineBytes) {
  ItemDescription item;
  item.little_endian = true;
  item.first_bit = 4;
  item.bits = 64;
  item.coding = Coding::kSigned;
  const ByteBuffer message = ByteBuffer::FromHex("E0FFFFFFFFFFFFFF0F");
  EXPECT_EQ(DecodeItem(item, message.View()), Variant(-2));
  ByteBuffer zeros;
  zeros.SetLength(9);
  EncodeItem(item, Variant(-2), zeros);
  EXPECT_EQ(zeros, message);
}

}  // namespace
}  // namespace korval::ecu
