// SPDX-License-Identifier: MIT
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "base/Variant.h"

namespace korval::base {
namespace {

using Type = Variant::Type;

Variant AnObject() { return Object{std::make_shared<int>(1)}; }
Variant AnArray() { return Array{std::make_shared<Variant[]>(2)}; }

TEST(Variant, CarriesTheTypeItWasMadeWith) {
  EXPECT_EQ(Variant().TypeOf(), Type::kEmpty);
  EXPECT_EQ(Variant(Null{}).TypeOf(), Type::kNull);
  EXPECT_EQ(Variant(std::int16_t{1}).TypeOf(), Type::kInt16);
  EXPECT_EQ(Variant(std::int32_t{1}).TypeOf(), Type::kInt32);
  EXPECT_EQ(Variant(1.0F).TypeOf(), Type::kSingle);
  EXPECT_EQ(Variant(1.0).TypeOf(), Type::kDouble);
  EXPECT_EQ(Variant(true).TypeOf(), Type::kBoolean);
  EXPECT_EQ(Variant(std::uint8_t{1}).TypeOf(), Type::kByte);
  EXPECT_EQ(Variant(std::string("x")).TypeOf(), Type::kString);
  EXPECT_EQ(Variant("x").TypeOf(), Type::kString);
  EXPECT_EQ(Variant(Date{1.5}).TypeOf(), Type::kDate);
  EXPECT_EQ(Variant(Currency{1}).TypeOf(), Type::kCurrency);
  EXPECT_EQ(AnObject().TypeOf(), Type::kObject);
  EXPECT_EQ(AnArray().TypeOf(), Type::kArray);
  EXPECT_EQ(Variant(ErrorValue{5}).TypeOf(), Type::kError);
}

TEST(Variant, IntegersSinglesDoublesBooleansAndBytesAreNumeric) {
  for (const Variant& value : {Variant(std::int16_t{1}), Variant(std::int32_t{1}), Variant(1.0F),
                               Variant(1.0), Variant(false), Variant(std::uint8_t{1})})
    EXPECT_TRUE(value.IsNumeric()) << value.ToText();
  for (const Variant& value : {Variant(), Variant(Null{}), Variant("1"), Variant(Date{1}),
                               Variant(Currency{1}), AnObject(), AnArray(), Variant(ErrorValue{1})})
    EXPECT_FALSE(value.IsNumeric()) << static_cast<int>(value.TypeOf());
}

TEST(Variant, OnlyTheAlternativeItselfIsGiven) {
  const Variant value(std::int32_t{7});
  ASSERT_NE(value.As<std::int32_t>(), nullptr);
  EXPECT_EQ(*value.As<std::int32_t>(), 7);
  EXPECT_EQ(value.As<double>(), nullptr);
  EXPECT_EQ(value.As<std::int16_t>(), nullptr);
}

TEST(Variant, EqualValuesOfDifferentTypesDiffer) {
  EXPECT_EQ(Variant(1.0), Variant(1.0));
  EXPECT_NE(Variant(1.0), Variant(1.0F));
  EXPECT_NE(Variant(1.0), Variant("1"));
  EXPECT_NE(Variant(), Variant(Null{}));
}

TEST(Variant, ConvertsToANumber) {
  EXPECT_EQ(Variant(std::int16_t{-32768}).ToDouble(), -32768.0);
  EXPECT_EQ(Variant(std::int32_t{2147483647}).ToDouble(), 2147483647.0);
  EXPECT_EQ(Variant(12.5F).ToDouble(), 12.5);
  EXPECT_EQ(Variant(1e300).ToDouble(), 1e300);
  EXPECT_EQ(Variant(true).ToDouble(), -1.0);
  EXPECT_EQ(Variant(false).ToDouble(), 0.0);
  EXPECT_EQ(Variant(std::uint8_t{255}).ToDouble(), 255.0);
  EXPECT_EQ(Variant(Date{36526.25}).ToDouble(), 36526.25);
  EXPECT_EQ(Variant(Currency{12345}).ToDouble(), 1.2345);
  EXPECT_EQ(Variant(Currency{-10000}).ToDouble(), -1.0);
}

TEST(Variant, ANumericStringConvertsAndAnyOtherDoesNot) {
  EXPECT_EQ(Variant("12.5").ToDouble(), 12.5);
  EXPECT_EQ(Variant(" -1E-05 ").ToDouble(), -1e-5);
  for (const char* text : {"", " ", "abc", "1x", "True", "nan", "inf", "1,5"})
    EXPECT_EQ(Variant(text).ToDouble(), std::nullopt) << text;
}

TEST(Variant, WhatIsNoNumberConvertsToNone) {
  for (const Variant& value : {Variant(), Variant(Null{}), AnObject(), AnArray(), Variant(ErrorValue{5})}) {
    EXPECT_EQ(value.ToDouble(), std::nullopt) << static_cast<int>(value.TypeOf());
    EXPECT_EQ(value.ToSingle(), std::nullopt) << static_cast<int>(value.TypeOf());
  }
}

TEST(Variant, ConvertsToASingleWhereTheMagnitudeFits) {
  EXPECT_EQ(Variant(0.1).ToSingle(), 0.1F);
  EXPECT_EQ(Variant(true).ToSingle(), -1.0F);
  EXPECT_EQ(Variant("12.5").ToSingle(), 12.5F);
  EXPECT_EQ(Variant(std::int32_t{16777217}).ToSingle(), 16777216.0F);
  EXPECT_EQ(Variant(static_cast<double>(std::numeric_limits<float>::max())).ToSingle(),
            std::numeric_limits<float>::max());
  EXPECT_EQ(Variant(1e39).ToSingle(), std::nullopt);
  EXPECT_EQ(Variant(-1e39).ToSingle(), std::nullopt);
  EXPECT_EQ(Variant("1e39").ToSingle(), std::nullopt);
  EXPECT_EQ(Variant(1e-300).ToSingle(), 0.0F);
}

TEST(Variant, BecomesItsDefaultText) {
  EXPECT_EQ(Variant(std::int16_t{-5}).ToText(), "-5");
  EXPECT_EQ(Variant(std::int32_t{10000000}).ToText(), "10000000");
  EXPECT_EQ(Variant(std::numeric_limits<std::int32_t>::min()).ToText(), "-2147483648");
  EXPECT_EQ(Variant(0.1F).ToText(), "0.1");
  EXPECT_EQ(Variant(1e7F).ToText(), "1E+07");
  EXPECT_EQ(Variant(1e7).ToText(), "10000000");
  EXPECT_EQ(Variant(1e-5).ToText(), "1E-05");
  EXPECT_EQ(Variant(true).ToText(), "True");
  EXPECT_EQ(Variant(false).ToText(), "False");
  EXPECT_EQ(Variant(std::uint8_t{255}).ToText(), "255");
  EXPECT_EQ(Variant("\xC2\xB0"
                    "C")
                .ToText(),
            "\xC2\xB0"
            "C");
  EXPECT_EQ(Variant(Currency{125000}).ToText(), "12.5");
}

TEST(Variant, WhatHasNoTextBecomesTheEmptyText) {
  for (const Variant& value : {Variant(), Variant(Null{}), AnObject(), AnArray()})
    EXPECT_EQ(value.ToText(), "") << static_cast<int>(value.TypeOf());
}

}  // namespace
}  // namespace korval::base
