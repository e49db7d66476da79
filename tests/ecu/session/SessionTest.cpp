// SPDX-License-Identifier: MIT
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "tests/ecu/session/SessionBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"
#include "tests/support/TempFolder.h"

namespace korval::ecu {
namespace {

using base::Variant;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

std::vector<std::string> Names(const viator3::Request::Items& items) {
  std::vector<std::string> names;
  for (const auto& item : items) names.push_back(item->Name());
  return names;
}

TEST(SessionTest, EmptyPortIs1001AndThePortThatWorksCanBeGivenThen) {
  const auto session = CreateSession({std::make_shared<tests::ManualEventLoop>(), "", "", {}});
  std::string description;
  EXPECT_EQ(NumberOf([&] { tests::Await(session->SetPort(session->Port())); }, &description), kNoInterface);
  EXPECT_THAT(description, HasSubstr("SIM"));
  EXPECT_EQ(NumberOf([&] { tests::Await(session->SetPort("SIM")); }), 0);
  EXPECT_EQ(session->Port(), "SIM");
}

TEST(SessionTest, PortsWithoutADriverAre1002AndSayWhatToDo) {
  for (const char* port : {"COM3", "/dev/ttyUSB0", "CAN:socketcan:can0", "NONE", "nonsense", "sim"}) {
    const auto session = CreateSession({std::make_shared<tests::ManualEventLoop>(), port, "", {}});
    std::string description;
    EXPECT_EQ(NumberOf([&] { tests::Await(session->SetPort(session->Port())); }, &description),
              kInterfaceRefused)
        << port;
    EXPECT_THAT(description, HasSubstr(std::string(port) + ": "));
    EXPECT_THAT(description, HasSubstr("choose the port SIM"));
    EXPECT_EQ(session->Port(), port);
  }
}

TEST(SessionTest, ReleasingThePortThatWasOpenRaisesNothing) {
  SessionBench bench;
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.session->SetPort("")); }), 0);
  EXPECT_EQ(bench.session->Port(), "");
  SessionBench closed;
  tests::Await(closed.session->Close());
  EXPECT_EQ(NumberOf([&] { tests::Await(closed.session->SetPort("")); }), 0);
}

TEST(SessionTest, EcuShowsWhatItsFileSays) {
  SessionBench bench(">", "Name='ENGINE' Ecu='Engine control' Protocol='DiagOnCAN'");
  const auto ecu = bench.Engine();
  EXPECT_EQ(ecu->Function(), "ENGINE");
  EXPECT_EQ(ecu->Name(), "Engine control");
  EXPECT_EQ(ecu->Protocol(), "DiagOnCAN");
  EXPECT_THAT(ecu->ReferenceData(), ElementsAre("Version"));
  ASSERT_THAT(ecu->RequestList(), SizeIs(5));
  EXPECT_EQ(ecu->RequestList()[0]->Name(), "READ");
  EXPECT_THAT(Names(bench.Request("READ")->Data()), ElementsAre("Speed", "Temp", "State"));
  EXPECT_THAT(Names(bench.Request("READ")->Parameters()), testing::IsEmpty());
  EXPECT_THAT(Names(bench.Request("WRITE_LIMIT")->Data()), ElementsAre("Limit", "Active"));
  EXPECT_THAT(Names(bench.Request("WRITE_LIMIT")->Parameters()), ElementsAre("Limit", "Active"));
  EXPECT_EQ(bench.Engine(), ecu);
}

TEST(SessionTest, UnknownFunctionIs2020) {
  SessionBench bench;
  std::string description;
  EXPECT_EQ(NumberOf([&] { bench.session->EcuByFunction("GEARBOX"); }, &description), kNoEcuFile);
  EXPECT_THAT(description, HasSubstr("GEARBOX"));
  EXPECT_EQ(NumberOf([&] { bench.session->EcuByFunction("engine"); }), kNoEcuFile);
}

TEST(SessionTest, EcusStandInTheOrderOfFirstUse) {
  SessionBench bench;
  bench.Offer("abs.xml", SessionBench::FileText("Name='ABS'"));
  EXPECT_THAT(bench.session->Ecus(), testing::IsEmpty());
  const auto can = bench.session->EcuByFunction("CAN");
  const auto abs = bench.session->EcuByFunction("ABS");
  const auto engine = bench.Engine();
  bench.session->EcuByFunction("CAN");
  EXPECT_THAT(bench.session->Ecus(), ElementsAre(can, abs, engine));
}

TEST(SessionTest, ExecutingInitialisesAndFillsTheItems) {
  SessionBench bench(
      "><Signal Item='Speed' Value='800'/><Signal Item='Temp' Value='90'/><Signal Item='State' Value='2'/>");
  const auto speed = bench.Item("READ", "Speed");
  const auto state = bench.Item("READ", "State");
  EXPECT_TRUE(speed->Value().IsEmpty());
  EXPECT_EQ(speed->Text(), "");
  EXPECT_FALSE(bench.Engine()->Initialised());
  tests::Await(bench.Request("READ")->Execute());
  EXPECT_TRUE(bench.Engine()->Initialised());
  EXPECT_EQ(speed->Value(), Variant(800.0));
  EXPECT_EQ(speed->Text(), "800");
  EXPECT_EQ(speed->Unit(), "rpm");
  EXPECT_EQ(bench.Item("READ", "Temp")->Unit(), "\u00B0C");
  EXPECT_EQ(state->Value(), Variant(std::int32_t{2}));
  EXPECT_EQ(state->Text(), "running");
  EXPECT_EQ(state->Unit(), "");
  EXPECT_EQ(state->OwningRequest(), bench.Request("READ"));
}

TEST(SessionTest, SentItemsStandAtTheBytesOfTheFileUntilTheyAreSet) {
  SessionBench bench;
  const auto limit = bench.Item("WRITE_LIMIT", "Limit");
  EXPECT_EQ(limit->Value(), Variant(50.0));
  EXPECT_EQ(bench.Item("WRITE_LIMIT", "Active")->Value(), Variant(true));
  limit->SetValue(120);
  EXPECT_EQ(limit->Value(), Variant(120.0));
  EXPECT_EQ(limit->Text(), "120");
  bench.Item("WRITE_STATE", "State")->SetText("running");
  EXPECT_EQ(bench.Item("WRITE_STATE", "State")->Value(), Variant(std::int32_t{2}));
}

TEST(SessionTest, ReceivedItemIsReadOnlyBeforeTheValueIsLookedAt) {
  SessionBench bench;
  const auto speed = bench.Item("READ", "Speed");
  EXPECT_EQ(NumberOf([&] { speed->SetValue("nonsense"); }), kReadOnly);
  EXPECT_EQ(NumberOf([&] { speed->SetText("nonsense"); }), kReadOnly);
}

TEST(SessionTest, RefusedValueIs2012AndTheItemKeepsItsOwn) {
  SessionBench bench;
  const auto limit = bench.Item("WRITE_LIMIT", "Limit");
  EXPECT_EQ(NumberOf([&] { limit->SetValue(2560); }), kValueRefused);
  EXPECT_EQ(NumberOf([&] { limit->SetText("fast"); }), kValueRefused);
  EXPECT_EQ(limit->Value(), Variant(50.0));
}

TEST(SessionTest, AnswerShorterThanMinBytesIs2002AndTheValuesStay) {
  SessionBench bench("><Answer Request='2101' Response='61010C8082'/>");
  std::string description;
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }, &description), kAnswerTooShort);
  EXPECT_THAT(description, HasSubstr("READ was answered with 5 bytes instead of 6"));
  EXPECT_TRUE(bench.Item("READ", "Speed")->Value().IsEmpty());
}

TEST(SessionTest, ItemThatTheAnswerDoesNotReachHasNoValue) {
  SessionBench bench("><Answer Request='2101' Response='610101'/>", "Name='ENGINE'",
                     "<Request Name='READ'><Sent Bytes='2101'/><Received><DataItem Name='A' FirstByte='3'/>"
                     "<DataItem Name='B' FirstByte='4'/></Received></Request>");
  tests::Await(bench.Request("READ")->Execute());
  EXPECT_EQ(bench.Item("READ", "A")->Value(), Variant(std::int32_t{1}));
  EXPECT_TRUE(bench.Item("READ", "B")->Value().IsEmpty());
  EXPECT_EQ(bench.Item("READ", "B")->Text(), "");
}

TEST(SessionTest, RequestThatSendsNothingIsNotAnswered) {
  SessionBench bench(">", "Name='ENGINE'", "<Request Name='NOTHING'/>");
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("NOTHING")->Execute()); }), kNoAnswer);
}

TEST(SessionTest, RawRequestGivesTheAnswerAlsoWhenItIsNegative) {
  SessionBench bench("><Answer Request='2180' Response='6180414243'/>");
  EXPECT_EQ(bench.Send("2180"), "6180414243");
  base::ByteBuffer answer;
  std::string description;
  EXPECT_EQ(NumberOf(
                [&] {
                  tests::Await(bench.Engine()->Send(base::ByteBuffer{0x27, 0x01}, answer));
                },
                &description),
            kNegativeAnswer);
  EXPECT_EQ(answer.ToHex(), "7F2711");
  EXPECT_EQ(description, "Negative answer: securityAccess (27): serviceNotSupported (11)");
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Engine()->Send({}, answer)); }), kValueRefused);
}

TEST(SessionTest, AnswerThatNeverComesIs2000AfterTheLatencyAndP2) {
  SessionBench bench("LatencyMs='100'><Answer Request='2101' Response=''/>", "Name='ENGINE' P2Ms='25'");
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }), kNoAnswer);
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(125)));
}

TEST(SessionTest, LatencyDelaysTheAnswerWithEventsRunning) {
  SessionBench bench("LatencyMs='3000'>");
  bool event = false;
  bench.loop->At(milliseconds(2999), [&] { event = true; });
  tests::Await(bench.Request("READ")->Execute());
  EXPECT_TRUE(event);
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(3000)));
}

TEST(SessionTest, WithoutLatencyNoTimePassesAndNoTimerRuns) {
  SessionBench bench(">", "Name='ENGINE' KeepAliveMs='0' Session='81'");
  tests::Await(bench.Request("READ")->Execute());
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(0)));
  EXPECT_EQ(bench.loop->PendingEvents(), 0U);
}

class ReconnectNumberTest : public testing::TestWithParam<std::int32_t> {};

TEST_P(ReconnectNumberTest, LeavesTheEcuUninitialisedUntilItIsReinitialised) {
  SessionBench bench("><Fault Request='READ' Number='" + std::to_string(GetParam()) + "' Times='1'/>");
  tests::Await(bench.Engine()->Initialise());
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }), GetParam());
  EXPECT_FALSE(bench.Engine()->Initialised());
  tests::Await(bench.Engine()->Reinitialise());
  EXPECT_TRUE(bench.Engine()->Initialised());
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }), 0);
}

INSTANTIATE_TEST_SUITE_P(Numbers, ReconnectNumberTest, testing::Values(1000, 2000, 2042, 2045, 2046));

TEST(SessionTest, OtherFaultsLeaveTheEcuInitialised) {
  SessionBench bench("><Fault Request='READ' Number='2044' Times='1'/>");
  std::string description;
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }, &description), 2044);
  EXPECT_THAT(description, HasSubstr("Error 2044"));
  EXPECT_TRUE(bench.Engine()->Initialised());
}

TEST(SessionTest, FaultOfTheInitialisationCountsEachAttempt) {
  SessionBench bench("><Fault Init='1' Number='1015' Times='2'/>");
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Engine()->Initialise()); }), kCanNetworkError);
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }), kCanNetworkError);
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Engine()->Reinitialise()); }), 0);
  EXPECT_TRUE(bench.Engine()->Initialised());
}

TEST(SessionTest, InitialisingTwiceIsOnceAndReinitialisingIsAnew) {
  SessionBench bench("><Fault Init='1' Number='2042' Times='0'/>");
  tests::Await(bench.Engine()->Initialise());
  tests::Await(bench.Engine()->Initialise());
  EXPECT_EQ(bench.Send("3E"), "7E");
  tests::Await(bench.Engine()->Reinitialise());
  EXPECT_TRUE(bench.Engine()->Initialised());
}

TEST(SessionTest, FailuresTakeTheirTextFromTheErrorsFile) {
  const tests::TempFolder folder;
  folder.Write("errors.xml",
               "<errors><error number='2020'><text lang='en'>Select something else</text></error></errors>");
  SessionBench bench;
  bench.session->SetLanguage("en");
  bench.session->SetErrorsFile(folder.Path("errors.xml"));
  std::string description;
  EXPECT_EQ(NumberOf([&] { bench.session->EcuByFunction("ABS"); }, &description), kNoEcuFile);
  EXPECT_THAT(description, testing::StartsWith("Select something else: ABS"));
  bench.session->SetLanguage("xx");
  NumberOf([&] { bench.session->EcuByFunction("ABS"); }, &description);
  EXPECT_THAT(description, testing::StartsWith("No ECU file for this function"));
}

TEST(SessionTest, AfterCloseEverythingIs1000UntilThePortIsOpenedAgain) {
  SessionBench bench;
  const auto request = bench.Request("READ");
  tests::Await(request->Execute());
  tests::Await(bench.session->Close());
  EXPECT_FALSE(bench.Engine()->Initialised());
  EXPECT_EQ(NumberOf([&] { tests::Await(request->Execute()); }), kLinkLost);
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Engine()->Initialise()); }), kLinkLost);
  EXPECT_EQ(NumberOf([&] { bench.Send("3E"); }), kLinkLost);
  EXPECT_EQ(bench.Item("READ", "Temp")->Value(), Variant(0.0));
  tests::Await(bench.session->SetPort("SIM"));
  EXPECT_EQ(NumberOf([&] { tests::Await(request->Execute()); }), 0);
}

TEST(SessionTest, WithoutAnOpenPortRequestsAre1001) {
  const auto session = CreateSession({std::make_shared<tests::ManualEventLoop>(), "SIM", "", {}});
  session->OfferEcuFile(tests::EcuFileOf(
      "engine.xml", base::LoadXmlText(SessionBench::FileText("Name='ENGINE'"), "engine.xml")));
  EXPECT_EQ(NumberOf([&] { tests::Await(session->EcuByFunction("ENGINE")->Initialise()); }), kNoInterface);
}

TEST(SessionTest, TesterPresentKeepsTheSimulatedEcuCompanyForADay) {
  SessionBench bench;
  tests::Await(bench.Request("READ")->Execute());
  bench.loop->Advance(std::chrono::hours(24));
  EXPECT_EQ(bench.loop->PendingEvents(), 1U);
  EXPECT_TRUE(bench.Engine()->Initialised());
  tests::Await(bench.Request("READ")->Execute());
}

TEST(SessionTest, TesterPresentThatFailsIsReportedOnce) {
  SessionBench bench("><Answer Request='3E' Response=''/>");
  tests::Await(bench.Request("READ")->Execute());
  bench.loop->Advance(std::chrono::seconds(3));
  EXPECT_FALSE(bench.Engine()->Initialised());
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }), kTesterPresentUnanswered);
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }), 0);
}

TEST(SessionTest, ItemsOutliveTheSessionAndLoseTheirRequest) {
  std::shared_ptr<viator3::DataItem> item;
  {
    SessionBench bench("><Signal Item='Speed' Value='800'/>");
    item = bench.Item("READ", "Speed");
    tests::Await(bench.Request("READ")->Execute());
  }
  EXPECT_EQ(item->Value(), Variant(800.0));
  EXPECT_EQ(item->Name(), "Speed");
  EXPECT_EQ(item->OwningRequest(), nullptr);
}

TEST(SessionTest, RequestsOutliveTheSession) {
  std::shared_ptr<viator3::Request> request;
  {
    SessionBench bench;
    request = bench.Request("READ");
  }
  EXPECT_EQ(NumberOf([&] { tests::Await(request->Execute()); }), kLinkLost);
}

// Zeros with a success would be taken for measured values.
TEST(SimulationTest, FileWithoutSimulationDoesNotAnswerOnPortSim) {
  SessionBench bench;
  const std::string with = SessionBench::FileText("Name='ENGINE' Ecu='Engine control'");
  std::string without = with;
  without.erase(with.find("<Simulation"), std::string("<Simulation ></Simulation>").size());
  bench.Offer("real.xml", without);
  std::string description;
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }, &description), kNoAnswer);
  EXPECT_THAT(description, testing::HasSubstr("has no Simulation element"));
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Engine()->Initialise()); }), kNoAnswer);
  bench.Offer("empty.xml", with);
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Request("READ")->Execute()); }), 0);
  EXPECT_EQ(bench.Item("READ", "Temp")->Value(), base::Variant(0.0));
}

}  // namespace
}  // namespace korval::ecu
