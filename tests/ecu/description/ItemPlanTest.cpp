// SPDX-License-Identifier: MIT
#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/Variant.h"
#include "ecu/description/ItemCoding.h"
#include "ecu/description/ItemPlan.h"
#include "ecu/description/SinglesPlan.h"

namespace korval::ecu {
namespace {

using base::ByteBuffer;

constexpr std::array kCodings{Coding::kUnsigned, Coding::kSigned, Coding::kFloat, Coding::kBoolean,
                              Coding::kAscii,    Coding::kBytes,  Coding::kBcd};

// One seed, the same cases in every run.
class Dice {
 public:
  std::size_t Below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine_);
  }
  bool Once(std::size_t in) { return Below(in) == 0; }
  double Number(double span) { return std::uniform_real_distribution<double>(-span, span)(engine_); }

 private:
  std::mt19937_64 engine_{20260101};
};

double StepOf(Dice& dice) {
  constexpr std::array kSteps{1.0, 0.01, 0.25, -0.5, 10.0, 1e-300, 1e30, 1e38, 1e300, 1.0 / 3};
  return dice.Once(4) ? dice.Number(1000) + 2000 : kSteps[dice.Below(kSteps.size())];
}

double OffsetOf(Dice& dice) {
  constexpr std::array kOffsets{0.0, -0.0, -40.0, 1e38, -1e308, 0.1};
  return dice.Once(4) ? dice.Number(1e6) : kOffsets[dice.Below(kOffsets.size())];
}

std::size_t BitsOf(const ItemDescription& item, Dice& dice) {
  if (item.IsText()) return 8 * (1 + dice.Below(10));
  if (item.coding == Coding::kFloat) return dice.Once(2) ? 32 : 64;
  return dice.Once(2) ? 16 : 1 + dice.Below(64);
}

// Any item that a reader lets through, those of DBC files included: little-endian at any bit.
ItemDescription RandomItem(Dice& dice) {
  ItemDescription item;
  item.name = "V";
  item.coding = kCodings[dice.Below(kCodings.size())];
  item.bits = BitsOf(item, dice);
  item.first_bit = dice.Below(12) * 8;
  item.little_endian = !item.IsText() && dice.Once(2);
  if (!item.IsText() && dice.Once(2)) item.first_bit += dice.Below(8);
  item.scaled = dice.Once(2);
  if (item.scaled || dice.Once(8)) {
    item.SetStep(StepOf(dice));
    item.offset = OffsetOf(dice);
  }
  if (dice.Once(4)) item.texts = {{0, "none"}, {7, "seven"}};
  return item;
}

std::uint8_t RandomByte(Dice& dice, std::size_t style) {
  constexpr std::string_view kDigits = "0123456789 .-Ee+\0";
  if (style == 0) return static_cast<std::uint8_t>(kDigits[dice.Below(kDigits.size())]);
  if (style == 1) return static_cast<std::uint8_t>(dice.Below(10) * 16 + dice.Below(10));
  if (style == 2) return dice.Once(2) ? 0xFF : 0x7F;
  return static_cast<std::uint8_t>(dice.Below(256));
}

ByteBuffer RandomAnswer(Dice& dice) {
  ByteBuffer answer;
  const std::size_t style = dice.Below(6);
  for (std::size_t left = dice.Below(28); left > 0; --left) answer.Append(RandomByte(dice, style));
  return answer;
}

std::string Described(const ItemDescription& item, const ByteBuffer& answer) {
  return "coding " + std::to_string(static_cast<int>(item.coding)) + ", first bit " +
         std::to_string(item.first_bit) + ", bits " + std::to_string(item.bits) +
         (item.little_endian ? ", little" : ", big") + (item.scaled ? ", scaled" : "") + ", step " +
         std::to_string(item.numerator) + "/" + std::to_string(item.denominator) + ", offset " +
         std::to_string(item.offset) + ", answer " + answer.ToHex();
}

// Bits, so that what is no number and both zeros are told apart.
std::optional<std::uint32_t> Bits(const std::optional<float>& single) {
  return single ? std::optional(std::bit_cast<std::uint32_t>(*single)) : std::nullopt;
}

std::optional<float> Decoded(const ItemDescription& item, const ByteBuffer& answer) {
  return DecodeItem(item, answer.View()).ToSingle();
}

TEST(ItemPlanTest, SingleIsTheDecodedValueInSinglePrecisionWhateverItemAndAnswer) {
  Dice dice;
  std::size_t plain = 0;
  std::size_t values = 0;
  for (int i = 0; i < 200000; ++i) {
    const ItemDescription item = RandomItem(dice);
    const ByteBuffer answer = RandomAnswer(dice);
    const ItemPlan plan(item);
    const auto expected = Bits(Decoded(item, answer));
    ASSERT_EQ(Bits(plan.Single(answer.View())), expected) << Described(item, answer);
    plain += plan.IsPlain() ? 1U : 0U;
    values += expected ? 1U : 0U;
    if (!plan.IsPlain() || answer.Length() < plan.PlainLength()) continue;
    ASSERT_EQ(plan.SingleBits(answer.View().data()), expected) << Described(item, answer);
  }
  EXPECT_GT(plain, 20000U);
  EXPECT_GT(values, 60000U);
}

TEST(ItemPlanTest, EveryPlaceAndWidthIsReadAtTheEndsOfItsRange) {
  for (const Coding coding : {Coding::kUnsigned, Coding::kSigned}) {
    for (std::size_t first_bit = 0; first_bit < 80; ++first_bit) {
      for (std::size_t bits = 1; bits <= 64; ++bits) {
        for (const std::uint8_t fill : {std::uint8_t{0x00}, std::uint8_t{0xFF}, std::uint8_t{0xA5}}) {
          ItemDescription item;
          item.coding = coding;
          item.first_bit = first_bit;
          item.bits = bits;
          ByteBuffer answer;
          for (std::size_t i = 0; i < item.BytesNeeded(); ++i) answer.Append(fill);
          ASSERT_EQ(Bits(ItemPlan(item).Single(answer.View())), Bits(Decoded(item, answer)))
              << Described(item, answer);
          answer.SetLength(answer.Length() - 1);
          ASSERT_EQ(ItemPlan(item).Single(answer.View()), std::nullopt) << Described(item, answer);
        }
      }
    }
  }
}

TEST(ItemPlanTest, FloatsPassAsTheyAre) {
  ItemDescription item;
  item.coding = Coding::kFloat;
  item.bits = 32;
  for (const char* bits : {"80000000", "7F800000", "FFC00001", "7FC12345", "00000001", "FF7FFFFF"}) {
    EXPECT_EQ(Bits(ItemPlan(item).Single(ByteBuffer::FromHex(bits).View())), std::stoul(bits, nullptr, 16));
  }
}

TEST(SinglesPlanTest, ValuesAreAppendedInTheOrderGivenAndWhatIsNoneAsItsPattern) {
  ItemDescription speed;
  speed.first_bit = 16;
  speed.bits = 16;
  speed.scaled = true;
  speed.SetStep(0.25);
  ItemDescription temperature;
  temperature.first_bit = 32;
  temperature.scaled = true;
  temperature.offset = -40;
  ItemDescription far;
  far.first_bit = 4000;
  SinglesPlan plan;
  for (const ItemDescription& item : {temperature, far, speed}) plan.Add(item);
  ByteBuffer reply{0x12};
  plan.AppendTo(reply, ByteBuffer::FromHex("61010C8082").View());
  EXPECT_EQ(reply.ToHex(), "1242B40000FF00000044480000");  // 90, none, 800
  reply.Clear();
  plan.AppendTo(reply, {});
  EXPECT_EQ(reply.ToHex(), "FF000000FF000000FF000000");
  SinglesPlan().AppendTo(reply, {});
  EXPECT_EQ(reply.Length(), 12U);
}

TEST(SinglesPlanTest, AppendsWhatEachItemGivesByItself) {
  Dice dice;
  for (int i = 0; i < 2000; ++i) {
    const ByteBuffer answer = RandomAnswer(dice);
    SinglesPlan plan;
    ByteBuffer expected;
    for (std::size_t count = dice.Below(20); count > 0; --count) {
      const ItemDescription item = RandomItem(dice);
      plan.Add(item);
      const std::uint32_t bits = Bits(Decoded(item, answer)).value_or(0xFF000000);
      for (unsigned shift : {24U, 16U, 8U, 0U}) expected.Append(static_cast<std::uint8_t>(bits >> shift));
    }
    ByteBuffer reply;
    plan.AppendTo(reply, answer.View());
    ASSERT_EQ(reply.ToHex(), expected.ToHex());
  }
}

}  // namespace
}  // namespace korval::ecu
