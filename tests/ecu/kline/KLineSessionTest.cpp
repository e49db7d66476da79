// SPDX-License-Identifier: MIT
// Sessions over a K-line in memory, the simulated ECU at its far end.
#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "KLineBench.h"
#include "tests/support/Await.h"

namespace korval::ecu {
namespace {

using std::chrono::milliseconds;

TEST(KLineSessionTest, FastInitialisationThenRequests) {
  KLineBench bench;
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("2101"));
  EXPECT_EQ(bench.line->Said(MemoryLine::Who::kEcu), FromEcu("C1EF8F") + FromEcu("61010C808202"));
}

TEST(KLineSessionTest, FastInitialisationPullsTheLineLowForTiniLWithinTWup) {
  KLineBench bench;
  tests::Await(bench.Engine()->Initialise());
  std::vector<MemoryLine::Edge> edges = bench.line->edges;
  ASSERT_GE(edges.size(), 2U);
  const auto high = edges.back();
  const auto low = edges.at(edges.size() - 2);
  EXPECT_TRUE(low.low);
  EXPECT_FALSE(high.low);
  EXPECT_EQ(low.time, base::TimePoint(milliseconds(300)));
  EXPECT_EQ(high.time - low.time, milliseconds(25));
  EXPECT_EQ(bench.line->log.front().begin - low.time, milliseconds(50));
}

TEST(KLineSessionTest, FiveBaudAddressStandsOnTheLineBitByBit) {
  KLineBench bench("Init='slow' InitAddress='33' W0Ms='10'");
  bench.PullEcuOut();
  EXPECT_EQ(bench.NumberOf("2101"), "2000");
  std::vector<std::pair<std::int64_t, bool>> levels;
  for (const auto& edge : bench.line->edges) {
    const auto time = std::chrono::duration_cast<milliseconds>(edge.time.time_since_epoch()).count();
    if (time >= 310) levels.emplace_back((time - 310) / 200, edge.low);
  }
  // Start bit, 33 hex from its least significant bit, stop bit.
  const std::vector<std::pair<std::int64_t, bool>> expected{{0, true}, {1, false}, {2, false}, {3, true},
                                                            {4, true}, {5, false}, {6, false}, {7, true},
                                                            {8, true}, {9, false}};
  EXPECT_EQ(levels, expected);
}

TEST(KLineSessionTest, FiveBaudInitialisationThenRequests) {
  KLineBench bench("Init='slow' InitAddress='33'");
  bench.line->has_break = false;
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
  EXPECT_EQ(bench.TesterSaid(), "3370" + FromTester("2101"));
  EXPECT_EQ(bench.line->Said(MemoryLine::Who::kEcu), "55EF8FCC" + FromEcu("61010C808202"));
}

TEST(KLineSessionTest, WithoutInitialisationTheRequestGoesAtOnce) {
  KLineBench bench("Init='none'");
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
  EXPECT_EQ(bench.TesterSaid(), FromTester("2101"));
}

TEST(KLineSessionTest, EchoIsFoundOutOrAsTheFileSays) {
  struct Row {
    const char* function;
    bool line_echoes;
    const char* outcome;
  };
  const std::vector<Row> rows{{"", true, "61010C808202"},
                              {"", false, "61010C808202"},
                              {"Echo='on'", true, "61010C808202"},
                              {"Echo='on'", false, "no echo: check cable and ignition"},
                              {"Echo='off'", false, "61010C808202"},
                              {"Init='slow'", false, "61010C808202"},
                              {"Init='slow' Echo='on'", false, "no echo: check cable and ignition"},
                              {"Init='none'", false, "61010C808202"}};
  for (const Row& row : rows) {
    KLineBench bench(row.function);
    bench.line->has_break = false;
    bench.line->echo = row.line_echoes;
    EXPECT_NE(bench.Send("2101").find(row.outcome), std::string::npos)
        << row.function << row.line_echoes << bench.Send("2101");
  }
}

TEST(KLineSessionTest, NothingAtAllOnTheLineNamesTheEchoToo) {
  KLineBench bench;
  bench.line->echo = false;
  bench.PullEcuOut();
  const std::string failure = bench.Send("2101");
  EXPECT_EQ(failure.substr(0, 4), "2000");
  EXPECT_NE(failure.find("no echo: check cable and ignition"), std::string::npos) << failure;
}

TEST(KLineSessionTest, LongMessagesHaveTheirLengthInAByteOfItsOwn) {
  std::string response = "6105";
  for (int place = 2; place < 255; ++place) response += "5A";
  KLineBench bench("", "><Answer Request='2105' Response='" + response + "'/>");
  EXPECT_EQ(bench.Send("2105"), response);
  const std::string request = "21" + std::string(2 * 63, '0');
  EXPECT_EQ(bench.NumberOf(request), "2001");
  EXPECT_NE(bench.TesterSaid().find("8010F140" + request), std::string::npos);
}

TEST(KLineSessionTest, RequestLongerThanAFrameIsRefusedAndNothingIsSent) {
  KLineBench bench;
  tests::Await(bench.Engine()->Initialise());
  const std::string said = bench.TesterSaid();
  EXPECT_EQ(bench.NumberOf("21" + std::string(2 * 255, '0')), "2012");
  EXPECT_EQ(bench.TesterSaid(), said);
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
}

TEST(KLineSessionTest, FaultsOfTheWireEndInTheirNumbersAndTheNextRequestHasItsAnswer) {
  struct Row {
    const char* fault;
    const char* outcome;
  };
  const std::vector<Row> rows{{"late", "2000"},
                              {"missing", "2000"},
                              {"damaged", "2000"},
                              {"pending", "61010C808202"},
                              {"foreign", "61010C808202"}};
  for (const Row& row : rows) {
    KLineBench bench("Repeats='0'", std::string(KLineBench::kUsualSimulation) +
                                        "<Fault Request='READ' Wire='" + row.fault + "'/>");
    const std::string outcome = bench.Send("2101");
    EXPECT_EQ(outcome.substr(0, std::string(row.outcome).size()), row.outcome) << row.fault;
    EXPECT_EQ(bench.Send("2101"), "61010C808202") << row.fault;
  }
}

TEST(KLineSessionTest, OneDamagedOrMissingAnswerCostsOneExchangeMore) {
  for (const std::string init : {"Init='fast'", "Init='slow'"}) {
    for (const std::string fault : {"damaged", "missing", "late"}) {
      KLineBench bench(
          init, std::string(KLineBench::kUsualSimulation) + "<Fault Request='READ' Wire='" + fault + "'/>");
      bench.line->has_break = false;
      tests::Await(bench.Engine()->Initialise());
      const base::TimePoint before = bench.loop->Now();
      const std::size_t said = bench.TesterSaid().size();
      EXPECT_EQ(bench.Send("2101"), "61010C808202") << init << fault;
      EXPECT_EQ(bench.TesterSaid().substr(said), FromTester("2101") + FromTester("2101")) << init << fault;
      EXPECT_LT(bench.loop->Now() - before, milliseconds(500)) << init << fault;
    }
  }
}

TEST(KLineSessionTest, AnswerThatIsDamagedAgainAndAgainIs2000AfterTwoRepeats) {
  KLineBench bench("KeepAliveMs='0'", std::string(KLineBench::kUsualSimulation) +
                                          "<Fault Request='READ' Wire='damaged' Times='3'/>");
  const std::string failure = bench.Send("2101");
  EXPECT_EQ(failure.substr(0, 4), "2000") << failure;
  EXPECT_NE(failure.find("a wrong checksum"), std::string::npos) << failure;
  EXPECT_EQ(bench.TesterSaid(),
            FromTester("81") + FromTester("2101") + FromTester("2101") + FromTester("2101"));
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
}

TEST(KLineSessionTest, RequestThatChangesSomethingIsNotSentAgain) {
  KLineBench bench(
      "", std::string(KLineBench::kUsualSimulation) + "<Fault Request='WRITE_LIMIT' Wire='damaged'/>");
  EXPECT_EQ(bench.NumberOf("3B1005"), "2000");
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("3B1005"));
}

TEST(KLineSessionTest, RequestWithoutAnAnswerIsNoFailureAndNoNewInitialisation) {
  for (const bool echo : {true, false}) {
    KLineBench bench("KeepAliveMs='0'");
    bench.line->echo = echo;
    EXPECT_EQ(bench.Send("3E02"), "");
    const auto requests = bench.Engine()->RequestList();
    const auto told = std::find_if(requests.begin(), requests.end(),
                                   [](const auto& request) { return request->Name() == "TELL_LIMIT"; });
    ASSERT_NE(told, requests.end());
    tests::Await((*told)->Execute());
    EXPECT_EQ(bench.Send("2101"), "61010C808202");
    EXPECT_EQ(bench.TesterSaid(),
              FromTester("81") + FromTester("3E02") + FromTester("3B1105") + FromTester("2101"));
  }
}

TEST(KLineSessionTest, InitialisationThatFailsSaysItsStepAndTheBytesHeard) {
  struct Row {
    const char* function;
    const char* fault;
    const char* number;
    const char* text;
  };
  const std::vector<Row> rows{{"", "Number='2042'", "2042", "fast initialisation, startCommunication: "},
                              {"", "Number='2000'", "2000", "no answer (heard: 8110F18103)"},
                              {"", "Wire='missing'", "2000", "no answer (heard: 8110F18103)"},
                              {"", "Wire='damaged'", "2000",
                               "the answer was damaged, it has a wrong checksum (heard: 8110F1810383F110C"},
                              {"Init='slow'", "Wire='missing'", "2000",
                               "5-baud initialisation: no sync byte 55 within W1 (heard: 10)"}};
  for (const Row& row : rows) {
    KLineBench bench(row.function, std::string("><Fault Init='1' ") + row.fault + "/>");
    bench.line->has_break = false;
    const std::string failure = bench.Send("2101");
    EXPECT_EQ(failure.substr(0, 4), row.number) << failure;
    EXPECT_NE(failure.find(row.text), std::string::npos) << failure;
    EXPECT_EQ(bench.NumberOf("2101"), "6101") << row.fault;
  }
}

TEST(KLineSessionTest, TesterPresentGoesOutInSilenceAndNeverIntoARequest) {
  KLineBench bench("KeepAliveMs='1000'");
  tests::Await(bench.Engine()->Initialise());
  bench.loop->Advance(milliseconds(10700));
  EXPECT_EQ(bench.TesterSaid().size(), FromTester("81").size() + 10 * FromTester("3E").size());
  for (int request = 0; request < 200; ++request) {
    EXPECT_EQ(bench.Send("2101"), "61010C808202");
    bench.loop->Advance(milliseconds(7 * (request % 150)));
  }
  base::TimePoint end{};
  for (const auto& entry : bench.line->log) {
    EXPECT_GE(entry.begin, end) << "two speak at the same time";
    end = entry.end;
  }
}

TEST(KLineSessionTest, ClosingEndsTheCommunication) {
  KLineBench bench;
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bench.CloseSession();
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("2101") + FromTester("82"));
  EXPECT_FALSE(bench.line->open);
}

TEST(KLineSessionTest, ClosingInTheMiddleOfARequestEndsTheCommunicationToo) {
  KLineBench bench;
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bench.loop->At(milliseconds(70), [&] { bench.CloseSession(); });
  EXPECT_EQ(bench.NumberOf("2101"), "1000");
  EXPECT_TRUE(bench.TesterSaid().ends_with(FromTester("82"))) << bench.TesterSaid();
  EXPECT_FALSE(bench.line->open);
}

TEST(KLineSessionTest, ReinitialisingSaysNothingButTheInitialisation) {
  KLineBench bench;
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bench.loop->Advance(milliseconds(100));
  tests::Await(bench.Engine()->Reinitialise());
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("2101") + FromTester("81"));
}

TEST(KLineSessionTest, RequestBehindP3maxInitialisesTheEcuFirst) {
  KLineBench bench("KeepAliveMs='0' P3MaxMs='1000'");
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bench.loop->Advance(milliseconds(900));
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("2101") + FromTester("2101"));
  bench.loop->Advance(milliseconds(1100));
  EXPECT_FALSE(bench.Engine()->Initialised());
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("2101") + FromTester("2101") +
                                    FromTester("81") + FromTester("2101"));
}

TEST(KLineSessionTest, WithoutAnInitialisationNoSilenceEndsTheCommunication) {
  KLineBench bench("Init='none' KeepAliveMs='0' P3MaxMs='1000'");
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bench.loop->Advance(milliseconds(1100));
  EXPECT_TRUE(bench.Engine()->Initialised());
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
}

TEST(KLineSessionTest, TesterPresentKeepsTheP3maxThatWasAgreedOn) {
  KLineBench bench("KeepAliveMs='2000'");
  EXPECT_EQ(bench.Send("830300020A0400"), "C303");  // P3max of 1 s
  for (int pause = 0; pause < 5; ++pause) {
    bench.loop->Advance(milliseconds(1900));
    EXPECT_EQ(bench.Send("2101"), "61010C808202");
  }
  EXPECT_EQ(bench.TesterSaid().find(FromTester("81"), 1), std::string::npos) << bench.TesterSaid();
  EXPECT_NE(bench.TesterSaid().find(FromTester("3E") + FromTester("3E")), std::string::npos);
}

TEST(KLineSessionTest, StopCommunicationAsARequestEndsItAndTheNextOneBeginsAnew) {
  KLineBench bench;
  EXPECT_EQ(bench.Send("82"), "C2");
  EXPECT_FALSE(bench.Engine()->Initialised());
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("82") + FromTester("81") + FromTester("2101"));
}

TEST(KLineSessionTest, AnswerOfFormat00IsReadWhereNothingIsReturned) {
  KLineBench bench("Init='none'");
  bench.line->echo = false;
  bench.PullEcuOut();
  FrameReader reader;
  bench.line->ecu_hears = [&](base::ByteView bytes) {
    if (reader.Add(bytes[0]) != FrameReader::Result::kFrame) return;
    bench.line->EcuWrites(
        BuildFrame({false, true}, 0, 0, base::ByteBuffer::FromHex("61010C808202").View()).View());
  };
  EXPECT_EQ(bench.Send("2101"), "61010C808202");
}

TEST(KLineSessionTest, AccessTimingParametersChangesTheTimesInUse) {
  KLineBench bench("P4Ms='0'");
  EXPECT_EQ(bench.Send("8303000A00FF00"), "C303");
  const base::TimePoint before = bench.loop->Now();
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  // P2min 0 and P3min 0: nothing but the bytes, 6 out and 10 back, takes time.
  EXPECT_LT(bench.loop->Now() - before, milliseconds(17));
  EXPECT_EQ(bench.Send("8301"), "C301");
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
}

TEST(KLineSessionTest, BusyEcuIsAskedAgain) {
  KLineBench bench("BusyRepeatMs='200' BusyCapMs='1000'", "><Answer Request='2105' Response='7F2121'/>");
  tests::Await(bench.Engine()->Initialise());
  const base::TimePoint before = bench.loop->Now();
  EXPECT_EQ(bench.NumberOf("2105"), "2001");
  EXPECT_GT(bench.loop->Now() - before, milliseconds(800));
  EXPECT_LT(bench.loop->Now() - before, milliseconds(1300));
}

TEST(KLineSessionTest, EcuThatDisappearsIsThereAgainWithItsNextRequest) {
  KLineBench bench;
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bench.PullEcuOut();
  for (int attempt = 0; attempt < 5; ++attempt) EXPECT_EQ(bench.NumberOf("2101"), "2000");
  bench.PlugEcuIn();
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
}

TEST(KLineSessionTest, AdapterPulledInTheMiddleOfARequestAndPutBack) {
  KLineBench bench;
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bench.loop->At(milliseconds(70), [&] { bench.line->Unplug(); });
  EXPECT_EQ(bench.NumberOf("2101"), "1000");
  EXPECT_NE(bench.Send("2101").find("plug the adapter in"), std::string::npos);
  bench.line->plugged = true;
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
}

TEST(KLineSessionTest, LineWithoutASilenceIsGivenUpAndServesOnceItIsSilent) {
  KLineBench bench("P3MaxMs='1000'");
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bool flooded = true;
  const std::string foreign =
      BuildFrame({true, false}, 0xF1, 0x28, std::vector<std::uint8_t>(8, 0x61)).ToHex();
  std::function<void()> flood = [&] {
    if (!flooded) return;
    bench.line->EcuWrites(foreign);
    bench.loop->At(milliseconds(11), flood);
  };
  flood();
  const base::TimePoint before = bench.loop->Now();
  const std::string failure = bench.Send("2101");
  EXPECT_EQ(failure.substr(0, 4), "2000");
  EXPECT_NE(failure.find("the line is never silent"), std::string::npos) << failure;
  EXPECT_LT(bench.loop->Now() - before, milliseconds(1200));
  flooded = false;
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
}

TEST(KLineSessionTest, FloodWhileTheAnswerIsAwaitedEndsWithP2) {
  KLineBench bench("Repeats='0' P2Ms='50'");
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  bench.PullEcuOut();
  bool flooded = true;
  const std::string foreign =
      BuildFrame({true, false}, 0xF1, 0x28, std::vector<std::uint8_t>(8, 0x61)).ToHex();
  std::function<void()> flood = [&] {
    if (!flooded) return;
    bench.line->EcuWrites(foreign);
    bench.loop->At(milliseconds(12), flood);
  };
  bench.loop->At(milliseconds(130), flood);
  const base::TimePoint before = bench.loop->Now();
  EXPECT_EQ(bench.NumberOf("2101"), "2000");
  EXPECT_LT(bench.loop->Now() - before, milliseconds(200));
  flooded = false;
}

TEST(KLineSessionTest, DayOfModelTimeLeavesNothingBehind) {
  KLineBench bench("P4Ms='0' KeepAliveMs='4000'");
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  const std::size_t pending = bench.loop->PendingEvents();
  for (int hour = 0; hour < 24; ++hour) {
    for (int minute = 0; minute < 60; ++minute) {
      bench.loop->Advance(std::chrono::minutes(1));
      ASSERT_EQ(bench.NumberOf("2101"), "6101");
    }
    bench.line->log.clear();
    EXPECT_LE(bench.loop->PendingEvents(), pending + 2);
  }
}

TEST(KLineSessionTest, EcuThatLeavesAndReturnsForADayHasValuesWithItsFirstRequestAgain) {
  KLineBench bench("P4Ms='0' KeepAliveMs='1000'");
  EXPECT_EQ(bench.NumberOf("2101"), "6101");
  const std::size_t pending = bench.loop->PendingEvents();
  for (int quarter = 0; quarter < 24 * 4; ++quarter) {
    // Every time somewhere else in an exchange or in a silence.
    bench.loop->Advance(std::chrono::minutes(10) + milliseconds(13 * quarter));
    ASSERT_EQ(bench.NumberOf("2101"), "6101") << quarter;
    bench.PullEcuOut();
    bench.loop->Advance(milliseconds(37 * quarter));
    ASSERT_NE(bench.NumberOf("2101"), "6101") << quarter;
    bench.loop->Advance(std::chrono::minutes(5));
    ASSERT_EQ(bench.NumberOf("2101"), "2000") << quarter;
    bench.PlugEcuIn();
    ASSERT_EQ(bench.NumberOf("2101"), "6101") << quarter;
    bench.line->log.clear();
    bench.line->edges.clear();
    ASSERT_LE(bench.loop->PendingEvents(), pending + 2) << quarter;
  }
}

}  // namespace
}  // namespace korval::ecu
