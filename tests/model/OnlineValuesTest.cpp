// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/OnlineValues.h"
#include "tests/support/CommandBench.h"

namespace korval::model {
namespace {

using protocol::CommandCode;
using testing::ElementsAre;
using tests::Fields;

class OnlineValuesTest : public testing::Test {
 protected:
  OnlineValuesTest() { bench_.SelectEngine(); }

  void Choose(const std::string& name) {
    const auto reply = bench_.Run(CommandCode::kSetAcquisition,
                                  Fields().Word(1).Word(0).Word(1).String("qor(" + name + ")"));
    ASSERT_EQ(reply.status, 0);
    bench_.TakeTrace();
  }
  tests::Reply Read() { return bench_.Run(CommandCode::kGetOnlineValue, Fields()); }

  void FailAlways(std::int32_t number) {
    first_->on_execute = [number] { throw base::Failure(number, "the reason"); };
  }
  void FailOnce(std::int32_t number) {
    first_->on_execute = [this, number] {
      if (first_->executions == 1) throw base::Failure(number, "the reason");
    };
  }

  tests::CommandBench bench_;
  std::shared_ptr<tests::FakeRequest> first_ = bench_.engine->AddRequest("FIRST");
  std::shared_ptr<tests::FakeRequest> second_ = bench_.engine->AddRequest("SECOND");
  std::shared_ptr<tests::FakeRequest> unused_ = bench_.engine->AddRequest("UNUSED");
  std::shared_ptr<tests::FakeDataItem> speed_ = first_->AddAnswerItem("Speed", 12.5);
  std::shared_ptr<tests::FakeDataItem> temp_ = second_->AddAnswerItem("Temp", std::int32_t{-40});
};

TEST_F(OnlineValuesTest, WithoutAListTheAnswerIsZeroValues) {
  const auto reply = Read();
  EXPECT_EQ(reply.status, 0);
  EXPECT_EQ(reply.data.ToHex(), "0000");
  EXPECT_EQ(first_->executions, 0);
}

TEST_F(OnlineValuesTest, AnswersValuesInTheOrderOfTheList) {
  Choose("Temp");
  Choose("Speed");
  const auto reply = Read();
  EXPECT_EQ(reply.status, 0);
  EXPECT_EQ(reply.data.ToHex(), "0002C220000041480000");
  EXPECT_EQ(bench_.TakeTrace(), "");
}

TEST_F(OnlineValuesTest, ExecutesInTheOrderOfTheLibraryOnlyWhatCarriesValues) {
  std::vector<std::string> order;
  first_->on_execute = [&] { order.emplace_back("FIRST"); };
  second_->on_execute = [&] { order.emplace_back("SECOND"); };
  first_->AddAnswerItem("More", 1);
  Choose("Temp");
  Choose("Speed");
  Choose("More");
  Read();
  EXPECT_THAT(order, ElementsAre("FIRST", "SECOND"));
  EXPECT_EQ(unused_->executions, 0);
}

TEST_F(OnlineValuesTest, NamesChosenAfterTheirFileChangedAreReadFromItsNewObject) {
  Choose("Speed");
  const auto replaced = bench_.session->ReplaceEcu(bench_.engine->Function());
  const auto request = replaced->AddRequest("FIRST");
  request->AddAnswerItem("Torque", 3.0);
  Choose("Torque");
  Read();
  EXPECT_EQ(request->executions, 1);
  EXPECT_EQ(first_->executions, 1) << "what was chosen before goes on";
}

TEST_F(OnlineValuesTest, RequestsOfOtherFunctionsAreNotExecuted) {
  Choose("Speed");
  const auto other = bench_.session->AddEcu("OTHER", "Other", "KWP2000");
  const auto request = other->AddRequest("ELSE");
  const auto item = request->AddAnswerItem("Else", 1.0);
  bench_.acquisition.Add("Else", *other, item);
  EXPECT_EQ(Read().data.ToHex(), "0002414800003F800000");
  EXPECT_EQ(request->executions, 0);
}

TEST_F(OnlineValuesTest, EmptyListIsAnsweredWithNothingBehindTheCount) {
  bench_.acquisition.Start(bench_.engine);
  EXPECT_EQ(Read().data.ToHex(), "0000");
}

TEST_F(OnlineValuesTest, EveryTypeTravelsAsARealAndTheRestAsTheMarker) {
  const std::vector<std::pair<base::Variant, std::string>> rows = {
      {std::int16_t{-2}, "C0000000"},
      {std::uint8_t{255}, "437F0000"},
      {1.0F, "3F800000"},
      {true, "BF800000"},
      {false, "00000000"},
      {base::Variant("12.5"), "41480000"},
      {base::Variant("abc"), "FF000000"},
      {base::Variant(), "FF000000"},
      {base::Variant(base::Null{}), "FF000000"},
      {base::Variant(1E300), "FF000000"},
  };
  Choose("Speed");
  for (const auto& [value, hex] : rows) {
    speed_->value = value;
    EXPECT_EQ(Read().data.ToHex(), "0001" + hex) << value.ToText();
  }
}

TEST_F(OnlineValuesTest, ReportsAnErrorThatIsNoLostLinkAtOnce) {
  Choose("Speed");
  Choose("Temp");
  FailAlways(2044);
  const auto reply = Read();
  EXPECT_EQ(reply.status, 65535);
  EXPECT_EQ(reply.data.ToHex(), "07FC000A74686520726561736F6E");
  EXPECT_EQ(bench_.TakeTrace(),
            "GetOnlineValue error : Function='MOTOR' Request='FIRST'  Error=the reason\r\n");
  EXPECT_EQ(second_->executions, 0);
  EXPECT_EQ(bench_.engine->reinitialisations, 0);
}

class LostLinkTest : public OnlineValuesTest, public testing::WithParamInterface<std::int32_t> {};

TEST_P(LostLinkTest, CostsOneReinitialisationAndOneRepetition) {
  const auto abs = bench_.session->AddEcu("ABS", "Brakes", "KWP2000");
  const auto can = bench_.session->AddEcu("CAN", "Messaging", "CAN");
  Choose("Speed");
  Choose("Temp");
  FailOnce(GetParam());
  const auto reply = Read();
  EXPECT_EQ(reply.status, 0);
  EXPECT_EQ(reply.data.ToHex(), "000241480000C2200000");
  EXPECT_EQ(bench_.TakeTrace(),
            "GetOnlineValue : Reinit Ecu Engine control\r\nGetOnlineValue : Reinit Ecu Brakes\r\n");
  EXPECT_EQ(first_->executions, 2);
  EXPECT_EQ(second_->executions, 1);
  EXPECT_EQ(bench_.engine->reinitialisations, 1);
  EXPECT_EQ(abs->reinitialisations, 1);
  EXPECT_EQ(can->reinitialisations, 0);
}

INSTANTIATE_TEST_SUITE_P(ReconnectSet, LostLinkTest, testing::Values(1000, 2000, 2042, 2045, 2046));

TEST_F(OnlineValuesTest, FailuresOfTheRepetitionAreIgnoredAndAllRequestsRun) {
  Choose("Speed");
  Choose("Temp");
  FailAlways(2000);
  const auto reply = Read();
  EXPECT_EQ(reply.status, 0);
  EXPECT_EQ(reply.data.ToHex(), "000241480000C2200000");
  EXPECT_EQ(first_->executions, 2);
  EXPECT_EQ(second_->executions, 1);
}

TEST_F(OnlineValuesTest, FailedReinitialisationIsReported) {
  const auto abs = bench_.session->AddEcu("ABS", "Brakes", "KWP2000");
  Choose("Speed");
  FailAlways(2000);
  bench_.engine->on_reinitialise = [] { throw base::Failure(2042, "refused"); };
  const auto reply = Read();
  EXPECT_EQ(reply.status, 65535);
  EXPECT_EQ(reply.data.ToHex(), "07FA00077265667573656400");
  EXPECT_EQ(bench_.TakeTrace(),
            "GetOnlineValue : Reinit Ecu Engine control\r\n"
            "GetOnlineValue Function='MOTOR' Name='Engine control'  Init Error=refused\r\n");
  EXPECT_EQ(abs->reinitialisations, 0);
  EXPECT_EQ(first_->executions, 1);
}

TEST_F(OnlineValuesTest, ValuesAreTracedWhileDebugging) {
  Choose("Speed");
  bench_.console.SetDebugTrace(true);
  Read();
  EXPECT_EQ(bench_.TakeTrace(), "Data : Speed = 12.5\r\n");
}

TEST_F(OnlineValuesTest, ListShowsValueTextsOnlyWhileShowValueIsTicked) {
  temp_->text = "cold";
  Choose("Speed");
  Choose("Temp");
  Read();
  EXPECT_EQ(bench_.data_view.rows[0][2], "0");
  bench_.online_values.SetShowValue(true);
  Read();
  EXPECT_EQ(bench_.data_view.rows[0][2], "12.5");
  EXPECT_EQ(bench_.data_view.rows[1][2], "cold");
}

TEST_F(OnlineValuesTest, RequestsOfAnotherEcuObjectAreNotExecuted) {
  bench_.folder.Write("abs.xml", "<xml><ecu name='ABS' url='abs_ecu.xml'/></xml>");
  bench_.folder.Write("abs_ecu.xml", "<xml><qor:Target><Function Name='ABS'/></qor:Target></xml>");
  const auto abs = bench_.session->AddEcu("ABS", "Brakes", "KWP2000");
  const auto wheels = abs->AddRequest("WHEELS");
  wheels->AddAnswerItem("Wheel");
  bench_.Run(CommandCode::kSelectFile, Fields().String("abs.xml").String("ABS").Word(0));
  Choose("Speed");
  bench_.Run(CommandCode::kSetAcquisition, Fields().Word(2).Word(0).Word(1).String("qor(Wheel)"));
  EXPECT_EQ(Read().data.ToHex(), "000241480000FF000000");
  EXPECT_EQ(wheels->executions, 0);
  EXPECT_EQ(first_->executions, 1);
}

TEST_F(OnlineValuesTest, SessionTakenAwayByTheHostIsAnError) {
  Choose("Speed");
  bench_.diagnosis.SetSession(nullptr);
  EXPECT_EQ(Read().status, 65535);
  EXPECT_EQ(first_->executions, 0);
}

TEST_F(OnlineValuesTest, ClientLeavingInsideTheWaitEndsTheCommand) {
  Choose("Speed");
  Choose("Temp");
  first_->on_execute = [this] {
    bench_.EndSession();
    throw base::Failure(1000, "the session was closed");
  };
  const auto reply = Read();
  EXPECT_EQ(reply.status, 65535);
  EXPECT_EQ(second_->executions, 0);
  EXPECT_EQ(bench_.engine->reinitialisations, 0);
}

TEST_F(OnlineValuesTest, CommandThatIsCalledOffEndsWithTheRequestUnderWay) {
  Choose("Speed");
  Choose("Temp");
  for (const bool fails : {false, true}) {
    first_->on_execute = [&] {
      bench_.command->CallOff();
      if (fails) throw base::Failure(2000, "no answer");
    };
    EXPECT_EQ(Read().status, tests::Reply::kNone);
    EXPECT_EQ(second_->executions, 0);
    EXPECT_EQ(bench_.engine->reinitialisations, 0);
  }
}

TEST_F(OnlineValuesTest, ClientLeavingInsideAReinitialisationEndsTheCommand) {
  const auto abs = bench_.session->AddEcu("ABS", "Brakes", "KWP2000");
  Choose("Speed");
  FailAlways(2000);
  bench_.engine->on_reinitialise = [this] { bench_.EndSession(); };
  EXPECT_EQ(Read().status, 65535);
  EXPECT_EQ(abs->reinitialisations, 0);
  EXPECT_EQ(first_->executions, 1);
}

TEST_F(OnlineValuesTest, ClientLeavingInsideTheRepetitionEndsTheCommand) {
  Choose("Speed");
  Choose("Temp");
  first_->on_execute = [this] {
    if (first_->executions == 2) bench_.EndSession();
    throw base::Failure(2000, "no answer");
  };
  EXPECT_EQ(Read().status, 65535);
  EXPECT_EQ(second_->executions, 0);
}

TEST_F(OnlineValuesTest, EverythingReleasedInsideTheWaitLivesUntilTheCommandReturns) {
  Choose("Speed");
  const std::weak_ptr<tests::FakeSession> watched = bench_.session;
  tests::FakeRequest& request = *first_;
  request.on_execute = [this, watched] {
    first_.reset();
    second_.reset();
    unused_.reset();
    speed_.reset();
    temp_.reset();
    bench_.engine.reset();
    bench_.session.reset();
    bench_.EndSession();
    EXPECT_FALSE(watched.expired());
    throw base::Failure(1000, "the session was closed");
  };
  EXPECT_EQ(Read().status, 65535);
  EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace korval::model
