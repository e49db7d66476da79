// SPDX-License-Identifier: MIT
// Diagnostics on CAN from the session down to the frames, on a bus in model time.
#include <algorithm>
#include <array>
#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ecu/can/SharedCanBus.h"
#include "tests/ecu/can/CanBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"

namespace korval::ecu {
namespace {

using std::chrono::hours;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kLongAnswer[] =
    "610274686520717569636B2062726F776E20666F78206A756D7073206F7665722074686520646F67";

TEST(CanLinkTest, SingleFramesThereAndBack) {
  CanBench bench;
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_THAT(bench.bus.log, ElementsAre("7E0#0221015555555555", "7E8#0461010019555555"));
}

TEST(CanLinkTest, RequestWithoutAnAnswerIsDoneWhenItIsOnTheBus) {
  CanBench bench;
  EXPECT_EQ(bench.Send("3E02"), "");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_THAT(bench.bus.log,
              ElementsAre("7E0#023E025555555555", "7E0#0221015555555555", "7E8#0461010019555555"));
}

TEST(CanLinkTest, LongAnswerGetsItsFlowControl) {
  CanBench bench;
  EXPECT_EQ(bench.Send("2102"), kLongAnswer);
  EXPECT_THAT(bench.bus.log,
              ElementsAre("7E0#0221025555555555", "7E8#1028610274686520", "7E0#3000005555555555",
                          "7E8#21717569636B2062", "7E8#22726F776E20666F", "7E8#2378206A756D7073",
                          "7E8#24206F7665722074",
                          "7E8#2568652064"
                          "6F6755"));
}

TEST(CanLinkTest, LongRequestGoesOutInBlocksThatTheEcuAsksFor) {
  CanBench bench(std::string(CanBench::kIdentifiers) + "BlockSize='3' StMinMs='2'");
  EXPECT_EQ(bench.Send("3B03" + std::string(kLongAnswer).substr(4)), "7B03");
  EXPECT_THAT(bench.bus.log, Contains("7E8#3003025555555555").Times(2));
}

TEST(CanLinkTest, ValuesAreReadAndWrittenByName) {
  CanBench bench;
  const auto instance = bench.session->CreateInstance("qor4inst.abs");
  instance->SetProtocol(bench.Abs());
  EXPECT_EQ(tests::Await(instance->Get("Speed")), base::Variant(12.5));
  tests::Await(instance->Set("Text", std::string("written in seven frames of a request..")));
  EXPECT_EQ(tests::Await(instance->Get("Text")), base::Variant("written in seven frames of a request.."));
}

TEST(CanLinkTest, ExtendedAddressingWith29BitIdentifiersAndWithoutPadding) {
  CanBench bench(
      "Name='ABS' RequestId='18DA28F1' ResponseId='18DAF128' Addressing='extended' Address='28' Tester='F1' "
      "Padding='none' KeepAliveMs='0'");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_THAT(bench.bus.log, ElementsAre("18DA28F1#28022101", "18DAF128#F10461010019"));
  EXPECT_EQ(bench.Send("2102"), kLongAnswer);
  EXPECT_THAT(bench.bus.log, Contains("18DA28F1#28300000"));
  EXPECT_THAT(bench.bus.log, Contains("18DAF128#F121"
                                      "2071756963"
                                      "6B"));
}

TEST(CanLinkTest, AnswerMayTakeLongerThanP2OnceItHasBegun) {
  CanBench bench(std::string(CanBench::kIdentifiers) + "P2Ms='20' StMinMs='100'");
  EXPECT_EQ(bench.Send("2102"), kLongAnswer);
  EXPECT_GT(bench.loop->Now(), base::TimePoint(milliseconds(400)));
}

TEST(CanLinkTest, AnswerThatProgressesMayTakeLongerThanThePendingCap) {
  std::string answer = "6103";
  while (answer.size() < 2 * 4095) answer += "A5";
  CanBench bench(std::string(CanBench::kIdentifiers) + "PendingCapMs='1000' StMinMs='127'",
                 "<Simulation><Answer Request='2103' Response='" + answer + "'/></Simulation>");
  EXPECT_EQ(bench.Send("2103"), answer);
  EXPECT_GT(bench.loop->Now(), base::TimePoint(seconds(74)));
}

TEST(CanLinkTest, AnswerThatBreaksOffBehindThePendingCapEndsTheWait) {
  CanBench bench(std::string(CanBench::kIdentifiers) + "PendingCapMs='1000'");
  bench.DisconnectEcu();
  bench.loop->At(milliseconds(40), [&] { bench.bus.InjectHex(0x7E8, "1014610100010203"); });
  bench.loop->At(milliseconds(900), [&] { bench.bus.InjectHex(0x7E8, "2104050607080900"); });
  EXPECT_EQ(bench.Send("2101"), "2000");
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(1900)));
  EXPECT_THAT(bench.description, HasSubstr("no consecutive frame within 1000 ms (N_Cr)"));
}

TEST(CanLinkTest, IdleLinkAnswersNoForeignFirstFrame) {
  CanBench bench;
  const auto another_testers_answer = [&] { bench.bus.InjectHex(0x7E8, "1028610274686520"); };
  EXPECT_EQ(bench.Send("2101"), "61010019");
  bench.bus.log.clear();
  another_testers_answer();
  bench.loop->Advance(seconds(1));
  EXPECT_THAT(bench.bus.log, testing::IsEmpty());
  bench.DisconnectEcu();
  EXPECT_EQ(bench.Send("2101"), "2000");
  another_testers_answer();
  bench.loop->Advance(seconds(1));
  EXPECT_THAT(bench.bus.log, ElementsAre("7E0#0221015555555555")) << "nor after a request that failed";
}

TEST(CanLinkTest, SilenceEndsTheWaitP2BehindTheRequest) {
  CanBench bench;
  bench.DisconnectEcu();
  EXPECT_EQ(bench.Send("2101"), "2000");
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(microseconds(222) + milliseconds(150)));
  EXPECT_THAT(bench.description, HasSubstr("ABS does not answer"));
}

TEST(CanLinkTest, IdentifiersThatNobodyKnowsAre1002) {
  CanBench bench("Name='ABS' RequestId='7E0'");
  EXPECT_EQ(bench.Send("2101"), "1002");
  EXPECT_THAT(bench.description, HasSubstr("CAN identifiers of ABS are unknown"));
  EXPECT_THAT(bench.bus.log, testing::IsEmpty());
}

TEST(CanLinkTest, AddressingThatIsNotUnderstoodIs1002) {
  CanBench bench;
  bench.session->OfferEcuFile(tests::EcuFileOf(
      "other.xml",
      base::LoadXmlText("<xml><qor:Target><Function Name='OTHER' RequestId='7E1' ResponseId='7E9' "
                        "Addressing='mixd'/></qor:Target></xml>",
                        "other.xml")));
  base::ByteBuffer answer;
  try {
    tests::Await(bench.session->EcuByFunction("OTHER")->Send({0x21, 0x01}, answer));
    ADD_FAILURE() << "sent";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), 1002);
    EXPECT_THAT(failure.Description(), HasSubstr("the Addressing 'mixd' of OTHER is not understood"));
  }
  EXPECT_THAT(bench.bus.log, testing::IsEmpty());
}

TEST(CanLinkTest, DiagnosticSessionIsOpenedFirst) {
  CanBench bench(std::string(CanBench::kIdentifiers) + "Session='89'");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_EQ(bench.bus.log.front(), "7E0#0210895555555555");
}

TEST(CanLinkTest, EcuThatDisappearsAndReturnsAnswersAtOnce) {
  CanBench bench;
  EXPECT_EQ(bench.Send("2102"), kLongAnswer);
  bench.bus.filter = [&bench](CanFrame& frame) {
    if (tests::FrameText(frame) == "7E8#21717569636B2062")
      bench.loop->At(microseconds(1), [&bench] { bench.DisconnectEcu(); });
    return true;
  };
  EXPECT_EQ(bench.Send("2102"), "2000");
  EXPECT_THAT(bench.description, HasSubstr("no consecutive frame within 1000 ms (N_Cr)"));
  EXPECT_EQ(bench.Send("2101"), "2000");
  bench.bus.filter = nullptr;
  bench.ConnectEcu();
  EXPECT_EQ(bench.Send("2102"), kLongAnswer);
}

TEST(CanLinkTest, AdapterThatIsPulledAndPutBackIsOpenedAnew) {
  CanBench bench;
  EXPECT_EQ(bench.Send("2101"), "61010019");
  bench.bus.Unplug();
  EXPECT_EQ(bench.Send("2101"), "1000");
  EXPECT_THAT(bench.description, HasSubstr("unplugged"));
  EXPECT_FALSE(bench.Abs()->Initialised());
  bench.loop->Advance(hours(1));
  EXPECT_EQ(bench.Send("2101"), "1000");
  bench.bus.Plug();
  bench.ConnectEcu();
  bench.loop->Advance(SharedCanBus::kReopenInterval);
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_TRUE(bench.Abs()->Initialised());
}

TEST(CanLinkTest, CablePulledInTheMiddleEndsTheWaitAtOnce) {
  CanBench bench;
  bench.DisconnectEcu();
  bench.loop->At(milliseconds(10), [&] { bench.bus.Unplug(); });
  EXPECT_EQ(bench.Send("2101"), "1000");
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(10)));
}

TEST(CanLinkTest, BusOffIs1015UntilTheControllerIsBack) {
  CanBench bench;
  bench.Send("2101");
  bench.bus.RaiseError(CanBus::Error::kBusOff);
  EXPECT_EQ(bench.Send("2101"), "1015");
  EXPECT_THAT(bench.description, HasSubstr("bus off"));
  bench.bus.RaiseRecovered();
  EXPECT_EQ(bench.Send("2101"), "61010019");
  const int opened = bench.bus.opened;
  bench.loop->Advance(seconds(1));
  EXPECT_EQ(bench.bus.opened, opened);
}

TEST(CanLinkTest, BusOffIs1015AllTheTimeHoweverOftenTheAdapterIsOpened) {
  CanBench bench;
  bench.bus.RaiseError(CanBus::Error::kBusOff);
  bench.bus.SetNotReady();
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(bench.Send("2101"), "1015");
    bench.loop->Advance(milliseconds(100));
  }
  EXPECT_THAT(bench.bus.log, testing::IsEmpty());
  bench.bus.RaiseRecovered();
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

TEST(CanLinkTest, AdapterThatIsStillConnectingIsWaitedFor) {
  CanBench bench;
  bench.bus.SetNotReady();
  tests::Await(bench.session->SetPort("CAN:model:can0"));
  bench.loop->At(milliseconds(500), [&] { bench.bus.RaiseRecovered(); });
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_GT(bench.bus.times.front(), base::TimePoint(milliseconds(500)));
}

TEST(CanLinkTest, AdapterThatNeverConnectsIs1000) {
  CanBench bench;
  bench.bus.SetNotReady();
  tests::Await(bench.session->SetPort("CAN:model:can0"));
  bench.loop->At(seconds(2), [&] { bench.bus.Unplug(); });
  EXPECT_EQ(bench.Send("2101"), "1000");
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(seconds(2)));
  EXPECT_EQ(bench.Send("2101"), "1000");
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(seconds(2))) << "a loss that is known is said at once";
  EXPECT_THAT(bench.bus.log, testing::IsEmpty());
}

TEST(CanLinkTest, BusOffThatDoesNotEndByItselfIsEndedByOpeningAnew) {
  CanBench bench;
  bench.bus.RaiseError(CanBus::Error::kBusOff);
  bench.loop->Advance(SharedCanBus::kReopenInterval);
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

TEST(CanLinkTest, FramesThatNobodyAcknowledgesAre1015) {
  CanBench bench;
  bench.bus.SetSilent(true);
  EXPECT_EQ(bench.Send("2101"), "1015");
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(seconds(1)));
  EXPECT_THAT(bench.description, HasSubstr("did not get onto the bus within 1000 ms (N_As)"));
  bench.loop->At(milliseconds(3), [&] { bench.bus.RaiseError(CanBus::Error::kNoAcknowledge); });
  EXPECT_EQ(bench.Send("2101"), "1015");
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(seconds(1) + milliseconds(3)));
  EXPECT_THAT(bench.description, HasSubstr("nobody acknowledges"));
  bench.bus.SetSilent(false);
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

TEST(CanLinkTest, FrameThatTheAdapterDropsIs1015ForWhoeverIsSending) {
  CanBench bench;
  bench.bus.RaiseError(CanBus::Error::kQueueFull);
  EXPECT_EQ(bench.Send("2101"), "61010019");
  bench.loop->At(microseconds(100), [&] { bench.bus.RaiseError(CanBus::Error::kQueueFull); });
  EXPECT_EQ(bench.Send("2101"), "1015");
  EXPECT_THAT(bench.description, HasSubstr("queue full"));
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

TEST(CanLinkTest, QueueThatStaysFullIs1015BehindNAs) {
  for (const auto n_as : {milliseconds(200), milliseconds(1000), milliseconds(3000)}) {
    CanBench bench(CanBench::kIdentifiers + ("NAsMs='" + std::to_string(n_as.count()) + "'"));
    bench.bus.SetQueue(0);
    EXPECT_EQ(bench.Send("2101"), "1015");
    EXPECT_EQ(bench.loop->Now(), base::TimePoint(n_as));
    EXPECT_THAT(bench.description, HasSubstr(std::to_string(n_as.count()) + " ms (N_As)"));
    EXPECT_THAT(bench.description, HasSubstr("the transmit queue of the CAN interface stayed full"));
    bench.bus.SetQueue(10);
    EXPECT_EQ(bench.Send("2101"), "61010019");
    EXPECT_THAT(bench.bus.log, ElementsAre("7E0#0221015555555555", "7E8#0461010019555555"))
        << "the request that was given up does not go out";
  }
}

TEST(CanLinkTest, QueueThatIsFullForAWhileOnlyDelaysARequest) {
  CanBench bench;
  bench.bus.SetQueue(0);
  bench.loop->At(milliseconds(900), [&] { bench.bus.SetQueue(10); });
  EXPECT_EQ(bench.Send("2102"), kLongAnswer);
}

TEST(CanLinkTest, ClosedSessionLeavesTheBus) {
  CanBench bench;
  bench.Send("2101");
  tests::Await(bench.session->Close());
  EXPECT_EQ(bench.Send("2101"), "1000");
  EXPECT_EQ(bench.bus.log.size(), 2U);
  tests::Await(bench.session->SetPort("CAN:model:can0"));
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

TEST(CanLinkTest, SessionClosedInsideAWaitEndsIt) {
  CanBench bench;
  bench.loop->At(microseconds(300), [&] { tests::Await(bench.session->Close()); });
  EXPECT_EQ(bench.Send("2102"), "1000");
  bench.loop->Advance(seconds(10));
  EXPECT_THAT(bench.bus.log, testing::Not(Contains(HasSubstr("7E0#30"))));
}

TEST(CanLinkTest, ForeignFramesAtFullRateDelayNothing) {
  CanBench bench;
  const std::function<void()> flood = [&] {
    bench.bus.InjectHex(0x7E9, "0461010BAD555555");
    bench.loop->At(microseconds(222), flood);
  };
  flood();
  for (int i = 0; i < 100; ++i) ASSERT_EQ(bench.Send("2102"), kLongAnswer);
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

TEST(CanLinkTest, IgnoredFramesOnOurIdentifierAtFullRateDelayNothing) {
  for (const char* ignored : {"4461010BAD555555", "3000005555555555", "0055555555555555"}) {
    CanBench bench;
    const std::function<void()> flood = [&] {
      bench.bus.InjectHex(0x7E8, ignored);
      bench.loop->At(microseconds(222), flood);
    };
    flood();
    for (int i = 0; i < 100; ++i) ASSERT_EQ(bench.Send("2102"), kLongAnswer) << ignored;
  }
}

TEST(CanLinkTest, AnswersOfOthersOnOurIdentifierAtFullRateDelayNothing) {
  for (const char* foreign : {"027E005555555555", "2161010BAD555555"}) {
    CanBench bench;
    const std::function<void()> flood = [&] {
      bench.bus.InjectHex(0x7E8, foreign);
      bench.loop->At(microseconds(222), flood);
    };
    flood();
    for (int i = 0; i < 100; ++i) ASSERT_EQ(bench.Send("2101"), "61010019") << foreign;
  }
}

TEST(CanLinkTest, ADayOfTesterPresentLeavesNothingBehind) {
  CanBench bench("Name='ABS' RequestId='7E0' ResponseId='7E8' KeepAliveMs='2000'");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  const std::size_t pending = bench.loop->PendingEvents();
  bench.bus.log.clear();
  bench.loop->Advance(hours(24));
  EXPECT_EQ(bench.loop->PendingEvents(), pending);
  const CanFrame full({0x7E0, false}, std::array<std::uint8_t, 8>{});
  const base::Duration period = seconds(2) + 2 * bench.bus.TimeOf(full);
  EXPECT_EQ(std::count(bench.bus.log.begin(), bench.bus.log.end(), "7E0#013E555555555555"),
            hours(24) / period);
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

// Two files that stand for one ECU: the second one names the same identifiers.
class OneEcuTwoFilesTest : public testing::Test {
 protected:
  static std::string Attributes(const std::string& name, const std::string& attributes) {
    return "Name='" + name + "' RequestId='7E0' ResponseId='7E8' " + attributes;
  }
  void OfferSecond(const std::string& attributes) {
    bench.session->OfferEcuFile(tests::EcuFileOf(
        "abs2.xml", base::LoadXmlText("<xml><qor:Target><Function " + Attributes("ABS2", attributes) +
                                          "/></qor:Target></xml>",
                                      "abs2.xml")));
  }
  std::string SendBySecond(const std::string& hex) {
    base::ByteBuffer answer;
    try {
      tests::Await(bench.session->EcuByFunction("ABS2")->Send(base::ByteBuffer::FromHex(hex), answer));
      return answer.ToHex();
    } catch (const base::Failure& failure) {
      return std::to_string(failure.Number());
    }
  }

  CanBench bench{Attributes("ABS", "KeepAliveMs='200' StMinMs='127'")};
};

TEST_F(OneEcuTwoFilesTest, ALongAnswerIsNotBrokenByTheOthersTesterPresent) {
  OfferSecond("KeepAliveMs='200'");
  EXPECT_EQ(SendBySecond("2101"), "61010019");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  bench.bus.log.clear();
  EXPECT_EQ(bench.Send("2102"), kLongAnswer);
  EXPECT_THAT(bench.bus.log, Contains(testing::StartsWith("7E0#30")).Times(1)) << "one flow control";
  EXPECT_THAT(bench.bus.log, Contains("7E0#013E555555555555").Times(0));
}

TEST_F(OneEcuTwoFilesTest, RequestsGoOutOneAfterTheOther) {
  OfferSecond("KeepAliveMs='0'");
  std::string other;
  bench.loop->At(milliseconds(300), [&] { other = SendBySecond("2101"); });
  EXPECT_EQ(bench.Send("2102"), kLongAnswer);
  bench.loop->Advance(milliseconds(100));
  EXPECT_EQ(other, "61010019");
}

TEST_F(OneEcuTwoFilesTest, IdleTheyKeepTheEcuAwakeWithOneTesterPresent) {
  OfferSecond("KeepAliveMs='100'");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_EQ(SendBySecond("2101"), "61010019");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  bench.bus.log.clear();
  bench.loop->Advance(milliseconds(1010));
  EXPECT_THAT(bench.bus.log, Contains("7E0#013E555555555555").Times(10))
      << "in the shorter of their intervals";
}

TEST_F(OneEcuTwoFilesTest, EachHasItsOwnTimesAndItsOwnDiagnosticSession) {
  OfferSecond("KeepAliveMs='0' Session='89' P2Ms='500'");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_THAT(bench.bus.log, Contains("7E0#0210895555555555").Times(0));
  EXPECT_EQ(SendBySecond("2101"), "61010019");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_EQ(SendBySecond("2101"), "61010019");
  EXPECT_THAT(bench.bus.log, Contains("7E0#0210895555555555").Times(1)) << "it stays open";
  bench.DisconnectEcu();
  const base::TimePoint start = bench.loop->Now();
  EXPECT_EQ(SendBySecond("2101"), "2000");
  EXPECT_EQ(bench.loop->Now(), start + microseconds(222) + milliseconds(500));
}

TEST_F(OneEcuTwoFilesTest, FileThatChangedSharesTheLinkWithTheOneBefore) {
  const auto before = bench.Abs();
  EXPECT_EQ(bench.Send("2101"), "61010019");
  std::string changed = bench.text;
  bench.session->OfferEcuFile(tests::EcuFileOf("changed.xml", base::LoadXmlText(changed, "changed.xml")));
  EXPECT_NE(bench.Abs(), before);
  EXPECT_EQ(bench.Send("2101"), "61010019");
  bench.bus.log.clear();
  bench.loop->Advance(milliseconds(1010));
  EXPECT_THAT(bench.bus.log, Contains("7E0#013E555555555555").Times(5));
}

TEST(CanLinkTest, TwoFunctionsShareOneBus) {
  CanBench bench;
  bench.session->OfferEcuFile(tests::EcuFileOf(
      "asr.xml", base::LoadXmlText("<xml><qor:Target><Function Name='ASR' RequestId='7E1' ResponseId='7E9' "
                                   "KeepAliveMs='0'/></qor:Target></xml>",
                                   "asr.xml")));
  base::ByteBuffer answer;
  bench.loop->At(microseconds(600), [&] { bench.bus.InjectHex(0x7E9, "037F2112"); });
  EXPECT_THROW(tests::Await(bench.session->EcuByFunction("ASR")->Send({0x21, 0x01}, answer)), base::Failure);
  EXPECT_EQ(answer.ToHex(), "7F2112");
  EXPECT_EQ(bench.Send("2101"), "61010019");
  EXPECT_EQ(bench.bus.opened, 2) << "one for the session, one for the simulated ECU";
}

}  // namespace
}  // namespace korval::ecu
