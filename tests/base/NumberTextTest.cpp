// SPDX-License-Identifier: MIT
#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "base/NumberText.h"

namespace korval::base {
namespace {

template <typename Value>
struct Row {
  Value value;
  const char* text;
};

TEST(NumberText, SinglesAreTheShortestTextWithENotationBelow1EMinus04AndFrom1E07) {
  const Row<float> rows[] = {
      {0.0F, "0"},
      {1.0F, "1"},
      {-1.0F, "-1"},
      {12.5F, "12.5"},
      {-12.5F, "-12.5"},
      {0.1F, "0.1"},
      {0.3F, "0.3"},
      {1.0F / 3.0F, "0.33333334"},
      {100.0F, "100"},
      {123456.0F, "123456"},
      {1234567.0F, "1234567"},
      {1234.5678F, "1234.5677"},
      {9999999.0F, "9999999"},
      {10000000.0F, "1E+07"},
      {-10000000.0F, "-1E+07"},
      {10000001.0F, "1.0000001E+07"},
      {12345678.0F, "1.2345678E+07"},
      {16777216.0F, "1.6777216E+07"},
      {1e10F, "1E+10"},
      {-1.5e20F, "-1.5E+20"},
      {1.5e20F, "1.5E+20"},
      {0.001F, "0.001"},
      {0.0001F, "0.0001"},
      {0.00012345F, "0.00012345"},
      {0.000099999F, "9.9999E-05"},
      {0.00001F, "1E-05"},
      {-0.00001F, "-1E-05"},
      {1.5e-9F, "1.5E-09"},
      {std::numeric_limits<float>::max(), "3.4028235E+38"},
      {std::numeric_limits<float>::lowest(), "-3.4028235E+38"},
      {std::numeric_limits<float>::min(), "1.1754944E-38"},
      {std::numeric_limits<float>::denorm_min(), "1E-45"},
  };
  for (const auto& row : rows) EXPECT_EQ(SingleText(row.value), row.text);
}

TEST(NumberText, DoublesAreTheShortestTextWithENotationBelow1EMinus04AndFrom1E15) {
  const Row<double> rows[] = {
      {0.0, "0"},
      {1.0, "1"},
      {-7.0, "-7"},
      {12.5, "12.5"},
      {0.1, "0.1"},
      {0.1 + 0.2, "0.30000000000000004"},
      {1.0 / 3.0, "0.3333333333333333"},
      {1e7, "10000000"},
      {123456789.125, "123456789.125"},
      {99999999999999.0, "99999999999999"},
      {999999999999999.0, "999999999999999"},
      {-999999999999999.0, "-999999999999999"},
      {999999999999999.9, "999999999999999.9"},
      {1e15, "1E+15"},
      {-1e15, "-1E+15"},
      {1000000000000001.0, "1.000000000000001E+15"},
      {123456789012345680.0, "1.2345678901234568E+17"},
      {1.5e20, "1.5E+20"},
      {-1.5e20, "-1.5E+20"},
      {1e22, "1E+22"},
      {1e23, "1E+23"},
      {1e100, "1E+100"},
      {0.001, "0.001"},
      {0.0001, "0.0001"},
      {0.00012345, "0.00012345"},
      {0.000123456789012345, "0.000123456789012345"},
      {0.00009999, "9.999E-05"},
      {1e-5, "1E-05"},
      {-1e-5, "-1E-05"},
      {1.5e-9, "1.5E-09"},
      {1e-100, "1E-100"},
      {std::numeric_limits<double>::max(), "1.7976931348623157E+308"},
      {std::numeric_limits<double>::lowest(), "-1.7976931348623157E+308"},
      {std::numeric_limits<double>::min(), "2.2250738585072014E-308"},
      {std::numeric_limits<double>::denorm_min(), "5E-324"},
  };
  for (const auto& row : rows) EXPECT_EQ(DoubleText(row.value), row.text);
}

TEST(NumberText, ASingleIsNotWrittenWithTheDigitsOfADouble) {
  EXPECT_EQ(SingleText(0.1F), "0.1");
  EXPECT_EQ(DoubleText(static_cast<double>(0.1F)), "0.10000000149011612");
}

TEST(NumberText, EveryTextReadsBackToTheSameNumber) {
  std::mt19937_64 random(20010);  // a fixed seed: the same numbers in every run
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    const auto back = ReadNumber(DoubleText(value));
    ASSERT_TRUE(back) << DoubleText(value);
    ASSERT_EQ(*back, value) << DoubleText(value);
  }
}

/// Writes numbers as much of Europe does.
class CommaPoint : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(NumberText, TheLocaleDoesNotTouchTheDecimalPoint) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
  std::ostringstream control;
  control << 1234.5;
  EXPECT_EQ(control.str(), "1.234,5");
  EXPECT_EQ(DoubleText(1234.5), "1234.5");
  EXPECT_EQ(SingleText(1234.5F), "1234.5");
  EXPECT_EQ(ReadNumber("1234.5"), 1234.5);
  EXPECT_EQ(ReadNumber("1.234,5"), std::nullopt);
  EXPECT_EQ(ReadInteger("1.234"), std::nullopt);
  std::locale::global(before);
}

TEST(ReadInteger, TakesSigned32BitDecimalsWithBlanksAround) {
  EXPECT_EQ(ReadInteger("0"), 0);
  EXPECT_EQ(ReadInteger("42"), 42);
  EXPECT_EQ(ReadInteger("  42 "), 42);
  EXPECT_EQ(ReadInteger("-7"), -7);
  EXPECT_EQ(ReadInteger("007"), 7);
  EXPECT_EQ(ReadInteger("2147483647"), 2147483647);
  EXPECT_EQ(ReadInteger("-2147483648"), std::numeric_limits<std::int32_t>::min());
}

TEST(ReadInteger, GivesNoneForAnythingElse) {
  for (const char* text : {"", " ", "-", "+", "2147483648", "-2147483649", "99999999999999999999", "1 2",
                           "1x", "x1", "0x10", "1.0", "1e3", "--1", "+-1", "one", "1,000"})
    EXPECT_EQ(ReadInteger(text), std::nullopt) << text;
  EXPECT_EQ(ReadInteger(std::string_view("1\0", 2)), std::nullopt);
}

TEST(ReadNumber, TakesDecimalsWithBlanksAround) {
  EXPECT_EQ(ReadNumber("0"), 0.0);
  EXPECT_EQ(ReadNumber("12.5"), 12.5);
  EXPECT_EQ(ReadNumber("-12.5"), -12.5);
  EXPECT_EQ(ReadNumber(" 3 "), 3.0);
  EXPECT_EQ(ReadNumber("1E-05"), 1e-5);
  EXPECT_EQ(ReadNumber("1e+07"), 1e7);
  EXPECT_EQ(ReadNumber("-1.5E+20"), -1.5e20);
  EXPECT_EQ(ReadNumber("1.7976931348623157E+308"), std::numeric_limits<double>::max());
  EXPECT_EQ(ReadNumber("5E-324"), std::numeric_limits<double>::denorm_min());
}

TEST(ReadNumber, GivesNoneForAnythingElse) {
  for (const char* text :
       {"",    " ",   "-",      ".",    "1 2",   "1.5x", "x1.5", "1,5",   "inf", "-inf",   "INF", "infinity",
        "nan", "NaN", "nan(1)", "0x10", "0x1p3", "1e",   "1e+",  "1.2.3", "--1", "1E+999", "True"})
    EXPECT_EQ(ReadNumber(text), std::nullopt) << text;
}

}  // namespace
}  // namespace korval::base
