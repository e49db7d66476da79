// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "model/SetAcquisition.h"
#include "tests/support/CommandBench.h"
#include "tests/support/ErrorRecord.h"

namespace korval::model {
namespace {

using protocol::CommandCode;
using testing::ElementsAre;
using tests::Fields;

class SetAcquisitionTest : public testing::Test {
 protected:
  SetAcquisitionTest() {
    read_->AddAnswerItem("EngineSpeed");
    read_->AddAnswerItem("CoolantTemp");
    bench_.SelectEngine();
  }

  tests::Reply Choose(const std::vector<std::string>& names, std::int32_t lun = 1) {
    Fields fields;
    fields.Word(lun).Word(100).Word(static_cast<std::int32_t>(names.size()));
    for (const auto& name : names) fields.String(name);
    return bench_.Run(CommandCode::kSetAcquisition, fields);
  }

  static std::string Error(const tests::Reply& reply) {
    EXPECT_EQ(reply.status, 65535);
    return tests::ErrorRecord(reply.data);
  }

  tests::CommandBench bench_;
  std::shared_ptr<tests::FakeRequest> read_ = bench_.engine->AddRequest("READ");
};

TEST_F(SetAcquisitionTest, ChosenValuesAreListedInOrder) {
  const auto reply = Choose({"T", "N"});
  EXPECT_EQ(reply.status, 0);
  EXPECT_TRUE(reply.data.Empty());
  EXPECT_EQ(bench_.TakeTrace(), "");
  EXPECT_THAT(bench_.data_view.rows, ElementsAre(ElementsAre("T", "1", "0", "CoolantTemp"),
                                                 ElementsAre("N", "1", "0", "EngineSpeed")));
  ASSERT_EQ(bench_.acquisition.Items()->Count(), 2);
  EXPECT_EQ(bench_.acquisition.Items()->Item(1)->Name(), "CoolantTemp");
  EXPECT_EQ(bench_.acquisition.CurrentEcu(), bench_.engine);
}

TEST_F(SetAcquisitionTest, NamesAreTracedWhileDebugging) {
  bench_.console.SetDebugTrace(true);
  Choose({"N", "qor(CoolantTemp)"});
  EXPECT_EQ(bench_.TakeTrace(), "set acq para(1,100,[N,qor(CoolantTemp)])\r\n");
}

TEST_F(SetAcquisitionTest, NoNamesAreTracedWithABlankAndChangeNothing) {
  EXPECT_EQ(Choose({}, 77).status, 0);
  EXPECT_EQ(bench_.TakeTrace(), "");
  bench_.console.SetDebugTrace(true);
  EXPECT_EQ(Choose({}, 77).status, 0);
  EXPECT_EQ(bench_.TakeTrace(), "set acq para(77 ,100,[])\r\n");
  EXPECT_EQ(bench_.data_view.clears, 0);
  EXPECT_EQ(bench_.acquisition.Items(), nullptr);
}

TEST_F(SetAcquisitionTest, UnknownLunIsTracedAlwaysAndOnce) {
  const std::string message = "set acq para(9,100,...) : Error unknown Emulator LUN";
  EXPECT_EQ(Error(Choose({"N"}, 9)), "1 " + message);
  EXPECT_EQ(bench_.TakeTrace(), message + "\r\n");
  bench_.console.SetDebugTrace(true);
  Choose({"N"}, 9);
  EXPECT_EQ(bench_.TakeTrace(), message + "\r\n");
}

TEST_F(SetAcquisitionTest, UnknownNameIs12003WithoutClosingBracket) {
  EXPECT_EQ(Error(Choose({"N", "X", "T"})), "12003 set acq para : Error unknown data (X");
  EXPECT_EQ(bench_.TakeTrace(), "");
  EXPECT_EQ(bench_.values.Count(), 1);
  EXPECT_EQ(bench_.acquisition.Items()->Count(), 1);
  bench_.console.SetDebugTrace(true);
  Choose({"T", "X"});
  EXPECT_EQ(bench_.TakeTrace(), "set acq para(1,100,[T,X])\r\nset acq para : Error unknown data (X\r\n");
}

TEST_F(SetAcquisitionTest, NameInBracketsNeedsNoShortName) {
  read_->AddAnswerItem("OilTemp");
  EXPECT_EQ(Choose({"qor(OilTemp)"}).status, 0);
  EXPECT_EQ(bench_.values.Item(1)->valueName, "OilTemp");
  EXPECT_EQ(bench_.values.Item(1)->korvName, "OilTemp");
}

TEST_F(SetAcquisitionTest, NameInBracketsThatTheEcuDoesNotHaveIsUnknownData) {
  EXPECT_EQ(Error(Choose({"qor(Nothing)"})), "12003 set acq para : Error unknown data (qor(Nothing)");
  EXPECT_EQ(Error(Choose({"qor()"})), "12003 set acq para : Error unknown data (qor()");
  EXPECT_EQ(Error(Choose({"qor("})), "12003 set acq para : Error unknown data (qor(");
  EXPECT_EQ(Error(Choose({"QOR(EngineSpeed)"})), "12003 set acq para : Error unknown data (QOR(EngineSpeed)");
  EXPECT_EQ(bench_.values.Count(), 0);
}

TEST_F(SetAcquisitionTest, RepeatedNameIsListedTwiceButAcquiredOnce) {
  bench_.console.SetDebugTrace(true);
  Choose({"N", "N"});
  EXPECT_EQ(bench_.TakeTrace(), "set acq para(1,100,[N,N [duplicate data]])\r\n");
  EXPECT_EQ(bench_.values.Count(), 2);
  EXPECT_EQ(bench_.data_view.rows.size(), 2U);
  EXPECT_EQ(bench_.acquisition.Items()->Count(), 1);
}

TEST_F(SetAcquisitionTest, RepeatedNameInBracketsHasABlankBehindItsMark) {
  bench_.console.SetDebugTrace(true);
  Choose({"qor(EngineSpeed)", "qor(EngineSpeed)", "N"});
  EXPECT_EQ(bench_.TakeTrace(),
            "set acq para(1,100,[qor(EngineSpeed),qor(EngineSpeed) [duplicate data] ,N])\r\n");
  EXPECT_EQ(bench_.acquisition.Items()->Count(), 2);
}

TEST_F(SetAcquisitionTest, LaterCommandsAddToTheList) {
  Choose({"N"});
  Choose({"T"});
  EXPECT_EQ(bench_.acquisition.Items()->Count(), 2);
  EXPECT_EQ(bench_.data_view.rows.size(), 2U);
}

TEST_F(SetAcquisitionTest, NamesSentAgainAndAgainAreNeverRefused) {
  const std::vector<std::string> names(5000, "N");
  for (int i = 0; i < 14; ++i) ASSERT_EQ(Choose(names).status, 0);
  EXPECT_EQ(Choose({"T"}).status, 0);
  EXPECT_EQ(bench_.acquisition.Items()->Count(), 2);
  EXPECT_EQ(bench_.values.Count(), 70001);
}

TEST_F(SetAcquisitionTest, ListWithoutRepeatsHoldsAsManyAsTheCountOfAnAnswerTells) {
  Choose({"T"});
  const auto item = bench_.engine->FindAnswerItem("EngineSpeed");
  for (int i = 1; i < 65535; ++i)
    ASSERT_TRUE(bench_.acquisition.Add("I" + std::to_string(i), *bench_.engine, item));
  EXPECT_THAT(Error(Choose({"N"})), testing::StartsWith("1 Too many values chosen, at most 65535 different"));
  EXPECT_EQ(bench_.values.Count(), 1);
  EXPECT_EQ(Choose({"T"}).status, 0);
  EXPECT_EQ(bench_.acquisition.Items()->Count(), 65535);
}

TEST_F(SetAcquisitionTest, RequestThatEndsEarlyNamesTheMissingFieldAndKeepsWhatCame) {
  const auto error = [this](const Fields& fields) {
    return Error(bench_.Run(CommandCode::kSetAcquisition, fields));
  };
  EXPECT_EQ(error(Fields()), "1 set acq para : Invalid 'lun' parameter, word expected");
  EXPECT_EQ(error(Fields().Word(1)), "1 set acq para : Invalid 'scan rate' parameter, word expected");
  EXPECT_EQ(error(Fields().Word(1).Word(100)), "1 set acq para : Invalid 'n' parameter, word expected");
  EXPECT_EQ(error(Fields().Word(1).Word(100).Word(65535).String("N")),
            "1 set acq para : Invalid 'name' parameter, string expected");
  EXPECT_EQ(bench_.values.Count(), 1);
}

TEST_F(SetAcquisitionTest, FunctionThatTheSessionDoesNotKnowKeepsItsNumber) {
  bench_.diagnosis.SetSession(std::make_shared<tests::FakeSession>());
  EXPECT_EQ(Error(Choose({"N"})), "2020 no ECU file for the function MOTOR");
}

TEST_F(SetAcquisitionTest, EndOfSessionDropsEverything) {
  Choose({"N"});
  bench_.EndSession();
  EXPECT_EQ(bench_.values.Count(), 0);
  EXPECT_EQ(bench_.acquisition.Items(), nullptr);
  EXPECT_EQ(bench_.acquisition.CurrentEcu(), nullptr);
  const auto reply = Choose({"N"});
  EXPECT_EQ(reply.status, 9027);
  EXPECT_EQ(bench_.TakeTrace(), "set parameter receive without file, not processed\r\n");
}

}  // namespace
}  // namespace korval::model
