// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "parameters/GetSetParameter.h"
#include "tests/support/CommandBench.h"
#include "tests/support/ErrorRecord.h"

namespace korval::parameters {
namespace {

using base::Variant;
using protocol::CommandCode;
using tests::Fields;

class GetSetParameterTest : public testing::Test {
 protected:
  GetSetParameterTest() { bench_.SelectEngine(); }

  tests::Reply Get(std::int32_t lun, const std::string& name) {
    return bench_.Run(CommandCode::kGetParameter, Fields().Word(lun).String(name));
  }
  tests::Reply Set(std::int32_t lun, const std::string& name, float value) {
    return bench_.Run(CommandCode::kSetParameter, Fields().Word(lun).String(name).Real(value));
  }
  static void ExpectError(const tests::Reply& reply, const std::string& message) {
    EXPECT_EQ(reply.status, 65535);
    EXPECT_EQ(tests::ErrorRecord(reply.data), "1 " + message);
  }

  tests::CommandBench bench_;
  std::map<std::string, Variant>& values_ = bench_.session->instance->values;
};

TEST_F(GetSetParameterTest, GetAnswersValueMinimumMaximumAndNoIncrement) {
  values_["Speed"] = 3.25;
  const auto reply = Get(1, "Speed");
  EXPECT_EQ(reply.status, 0);
  EXPECT_EQ(reply.data.ToHex(), "40500000405000004050000000000000");
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(GetSetParameterTest, GetAnswersEveryNumericType) {
  const std::vector<std::pair<Variant, std::string>> rows = {
      {std::int16_t{-1}, "BF800000"},
      {std::int32_t{100000}, "47C35000"},
      {0.5F, "3F000000"},
      {true, "BF800000"},
      {false, "00000000"},
      {std::uint8_t{200}, "43480000"},
  };
  for (const auto& [value, real] : rows) {
    values_["X"] = value;
    std::string four = real;
    four.append(real).append(real).append("00000000");
    EXPECT_EQ(Get(1, "X").data.ToHex(), four) << value.ToText();
  }
}

TEST_F(GetSetParameterTest, GetRefusesEveryOtherType) {
  const std::vector<Variant> rows = {Variant("12"),
                                     Variant(),
                                     Variant(base::Null{}),
                                     Variant(base::Date{1.0}),
                                     Variant(base::Currency{10000}),
                                     Variant(base::Object{}),
                                     Variant(base::Array{}),
                                     Variant(base::ErrorValue{5}),
                                     Variant(1E300)};
  for (const Variant& value : rows) {
    values_["X"] = value;
    ExpectError(Get(1, "X"), "get parameter(1,X) : Invalid data type for answer");
  }
}

TEST_F(GetSetParameterTest, TextIsTracedWithTheCommandThatReadsIt) {
  values_["Vin"] = "WVW";
  Get(1, "Vin");
  EXPECT_EQ(bench_.TakeTrace(), "");
  bench_.console.SetDebugTrace(true);
  Get(1, "Vin");
  EXPECT_EQ(bench_.TakeTrace(),
            "Vin is a text: extended get parameter reads it\r\n"
            "get parameter(1,Vin) : Invalid data type for answer\r\n");
}

TEST_F(GetSetParameterTest, GetReadsThroughTheShortName) {
  values_["EngineSpeed"] = 1;
  EXPECT_EQ(Get(1, "N").status, 0);
}

TEST_F(GetSetParameterTest, GetOfAnUnknownLunNamesIt) {
  ExpectError(Get(7, "Speed"), "get parameter(7,Speed) : Error unknown Emulator LUN");
  ExpectError(Get(0, ""), "get parameter(0,) : Error unknown Emulator LUN");
  EXPECT_EQ(bench_.session->log.back().find("CreateInstance"), std::string::npos);
}

TEST_F(GetSetParameterTest, FailedGetHasItsCapital) {
  ExpectError(Get(1, "Nope"), "Get parameter(1,Nope) : Error = obj.Nope  Error : unknown name Nope");
}

TEST_F(GetSetParameterTest, GetThatEndsEarlyNamesTheField) {
  ExpectError(bench_.Run(CommandCode::kGetParameter, Fields()),
              "get parameter(lun,name) : Invalid 'lun' parameter, word expected");
  ExpectError(bench_.Run(CommandCode::kGetParameter, Fields().Word(1)),
              "get parameter(lun,name) : Invalid 'name' parameter, string expected");
}

TEST_F(GetSetParameterTest, GetIsTracedOnOneLineOnlyWhileDebugging) {
  values_["Speed"] = 12.5;
  bench_.console.SetDebugTrace(true);
  Get(1, "Speed");
  EXPECT_EQ(bench_.TakeTrace(), "get parameter(1,Speed) ok   value = 12.5\r\n");
}

TEST_F(GetSetParameterTest, SetWritesASingleAndIsTracedAlways) {
  values_["Idle"] = 0;
  const auto reply = Set(1, "Idle", 12.5F);
  EXPECT_EQ(reply.status, 0);
  EXPECT_TRUE(reply.data.Empty());
  EXPECT_EQ(values_["Idle"], Variant(12.5F));
  EXPECT_EQ(bench_.TakeTrace(), "set parameter(1,Idle,12.5)\r\n");
}

TEST_F(GetSetParameterTest, SetShowsItsValueInTheShortestForm) {
  values_["Idle"] = 0;
  Set(1, "Idle", 0.00001F);
  Set(1, "Idle", 0.0F);
  Set(1, "Idle", 0.1F);
  EXPECT_EQ(bench_.TakeTrace(),
            "set parameter(1,Idle,1E-05)\r\nset parameter(1,Idle,0)\r\nset parameter(1,Idle,0.1)\r\n");
}

TEST_F(GetSetParameterTest, SetOfAnUnknownLunIsNotTraced) {
  ExpectError(Set(9, "Idle", 12.5F), "set parameter(9,Idle,12.5) : Error unknown Emulator LUN");
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(GetSetParameterTest, FailedSetIsTracedThenAnswered) {
  ExpectError(Set(1, "Idle", 2), "set parameter(1,Idle,2) : Error = obj.Idle  Error : unknown name Idle");
  EXPECT_EQ(bench_.TakeTrace(), "set parameter(1,Idle,2)\r\n");
  bench_.console.SetDebugTrace(true);
  Set(1, "Idle", 2);
  EXPECT_EQ(bench_.TakeTrace(),
            "set parameter(1,Idle,2)\r\n"
            "set parameter(1,Idle,2) : Error = obj.Idle  Error : unknown name Idle\r\n");
}

TEST_F(GetSetParameterTest, MissingInstanceObjectIsReportedWithCodeOne) {
  bench_.session->instance = nullptr;
  ExpectError(Get(1, "X"),
              "Get parameter(1,X) : Error = CreateObject : qor4inst.ENGINE  Error : no such class");
}

TEST_F(GetSetParameterTest, SetThatEndsEarlyNamesTheField) {
  const auto set = [this](const Fields& fields) { return bench_.Run(CommandCode::kSetParameter, fields); };
  ExpectError(set(Fields()), "set parameter(lun,name,v) : Invalid 'lun' parameter, word expected");
  ExpectError(set(Fields().Word(1)), "set parameter(lun,name,v) : Invalid 'name' parameter, string expected");
  ExpectError(set(Fields().Word(1).String("Idle")),
              "set parameter(lun,name,v) : Invalid 'v' parameter, real expected");
  ExpectError(set(Fields().Word(1).String("Idle").Word(0)),
              "set parameter(lun,name,v) : Invalid 'v' parameter, real expected");
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(GetSetParameterTest, ClientLeavingInsideTheWaitEndsInAnErrorRecord) {
  values_["Speed"] = 1;
  bench_.session->instance->on_access = [this] {
    bench_.EndSession();
    bench_.session.reset();
    throw base::Failure(1000, "the session was closed");
  };
  ExpectError(Get(1, "Speed"), "Get parameter(1,Speed) : Error = obj.Speed  Error : the session was closed");
}

}  // namespace
}  // namespace korval::parameters
