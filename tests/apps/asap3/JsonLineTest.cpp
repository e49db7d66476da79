// SPDX-License-Identifier: MIT
#include <limits>

#include <gtest/gtest.h>

#include "apps/asap3/JsonLine.h"

namespace korval::apps {
namespace {

TEST(JsonLineTest, MembersKeepTheirOrder) {
  EXPECT_EQ(JsonLine().Text(), "{}");
  EXPECT_EQ(JsonLine().Add("b", 1).Add("a", std::string("x")).AddNull("c").Text(),
            R"({"b":1,"a":"x","c":null})");
  EXPECT_EQ(JsonLine().Add("o", JsonLine().Add("i", 2)).Text(), R"({"o":{"i":2}})");
}

TEST(JsonLineTest, NumbersAreTheShortestThatReadBack) {
  EXPECT_EQ(JsonLine().Add("f", 0.1F).Add("d", 0.1).Add("e", 1E-5F).Add("z", -0.0).Text(),
            R"({"f":0.1,"d":0.1,"e":1E-05,"z":0})");
}

TEST(JsonLineTest, WhatJsonDoesNotKnowIsNull) {
  EXPECT_EQ(JsonLine()
                .Add("a", std::numeric_limits<float>::infinity())
                .Add("b", std::numeric_limits<double>::quiet_NaN())
                .Add("c", std::optional<float>())
                .Add("d", std::optional<float>(2.5F))
                .Text(),
            R"({"a":null,"b":null,"c":null,"d":2.5})");
}

TEST(JsonLineTest, TextIsEscaped) {
  EXPECT_EQ(JsonLine().Add("a\"b", std::string("c\\d\n\x1F\u00B0/")).Text(),
            "{\"a\\\"b\":\"c\\\\d\\u000A\\u001F\u00B0/\"}");
}

TEST(JsonLineTest, NoControlCharacterReachesATerminal) {
  EXPECT_EQ(JsonLine().Add("a", std::string("\x7F\u0080\u009B\u00A0")).Text(),
            "{\"a\":\"\\u007F\\u0080\\u009B\u00A0\"}");
}

TEST(JsonLineTest, BytesThatAreNoUtf8AreReplaced) {
  EXPECT_EQ(JsonLine().Add("a", std::string("x\xFFy")).Text(), "{\"a\":\"x\uFFFDy\"}");
}

}  // namespace
}  // namespace korval::apps
