// SPDX-License-Identifier: MIT
// What goes wrong on a K-line, row by row: the number, and what is not sent afterwards.
#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ScriptedEcu.h"
#include "tests/support/Await.h"

namespace korval::ecu {
namespace {

using std::chrono::milliseconds;
using Script = ScriptedEcu::Script;

const std::string kAnswer = FromEcu("61010C808202");
const std::string kGood = "61010C808202";

struct Outcome {
  std::string result;
  base::Duration took;
  std::string said_afterwards;
};

// The outcome of 21 01 with a script for it, from the end of the initialisation.
Outcome Play(const Script& script, const std::string& function = "KeepAliveMs='0' Repeats='0'") {
  KLineBench bench(function + " P1Ms='20' P2Ms='50'");
  tests::Await(bench.Engine()->Initialise());
  ScriptedEcu ecu(bench, script);
  const base::TimePoint before = bench.loop->Now();
  const std::string result = bench.Send("2101");
  const base::Duration took = bench.loop->Now() - before;
  const std::size_t said = bench.TesterSaid().size();
  bench.loop->Advance(std::chrono::seconds(3));
  return {result, took, bench.TesterSaid().substr(said)};
}

struct Row {
  const char* what;
  Script script;
  const char* outcome;  // begins like this
  const char* text = "";
};

std::string FrameOf(HeaderForm form, std::uint8_t target, std::uint8_t source) {
  return BuildFrame(form, target, source, base::ByteBuffer::FromHex(kGood).View()).ToHex();
}

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows{
      {"the answer as it should be", {{milliseconds(25), kAnswer}}, "6101"},
      {"length in a byte of its own", {{milliseconds(25), FrameOf({true, true}, 0xF1, 0x10)}}, "6101"},
      {"no addresses", {{milliseconds(25), FrameOf({false, false}, 0, 0)}}, "6101"},
      {"no addresses, length byte", {{milliseconds(25), FrameOf({false, true}, 0, 0)}}, "6101"},
      {"silence", {}, "2000", "no answer"},
      {"late", {{milliseconds(80), kAnswer}}, "2000", "no answer"},
      {"at the last moment", {{milliseconds(49), kAnswer}}, "6101"},
      {"doubled", {{milliseconds(25), kAnswer}, {milliseconds(45), kAnswer}}, "6101"},
      {"to another tester", {{milliseconds(25), FrameOf({true, false}, 0xF5, 0x10)}}, "2000"},
      {"from another ECU", {{milliseconds(25), FrameOf({true, false}, 0xF1, 0x28)}}, "2000"},
      {"a foreign frame, then the answer",
       {{milliseconds(10), FrameOf({true, false}, 0xF1, 0x28)}, {milliseconds(45), kAnswer}},
       "6101"},
      {"of another service", {{milliseconds(25), FromEcu("5080")}}, "2003", "5080"},
      {"of another identifier", {{milliseconds(25), FromEcu("6102AABB")}}, "2003", "6102AABB"},
      {"of another identifier, then the answer",
       {{milliseconds(10), FromEcu("6102AABB")}, {milliseconds(45), kAnswer}},
       "6101"},
      {"the end of the communication", {{milliseconds(25), FromEcu("C2")}}, "2045", "stopCommunication"},
      {"of another service, then the answer",
       {{milliseconds(10), FromEcu("7E")}, {milliseconds(45), kAnswer}},
       "6101"},
      {"negative", {{milliseconds(25), FromEcu("7F2131")}}, "2001", "requestOutOfRange"},
      {"pending, then the answer",
       {{milliseconds(25), FromEcu("7F2178")}, {milliseconds(4000), kAnswer}},
       "6101"},
      {"pending, then nothing", {{milliseconds(25), FromEcu("7F2178")}}, "2000", "no answer"},
      {"a format byte of another standard",
       {{milliseconds(25), "486B1041000104"}},
       "2000",
       "another standard"},
      {"a length of 0", {{milliseconds(25), "80F11000"}}, "2000", "a length of 0"},
      {"over-long", {{milliseconds(25), kAnswer + "AABBCC"}}, "6101"},
      {"garbage in front of the answer", {{milliseconds(5), "FF00"}, {milliseconds(40), kAnswer}}, "6101"},
      {"a pause within the answer below P1",
       {{milliseconds(25), kAnswer.substr(0, 8)}, {milliseconds(45), kAnswer.substr(8)}},
       "6101"},
      {"a pause within the answer above P1",
       {{milliseconds(25), kAnswer.substr(0, 8)}, {milliseconds(60), kAnswer.substr(8)}},
       "2000",
       "a truncated frame"},
  };
  return rows;
}

TEST(KLineViolationTest, EveryRowHasItsNumberAndNothingIsSentAfterwards) {
  for (const Row& row : Rows()) {
    const Outcome outcome = Play(row.script);
    EXPECT_EQ(outcome.result.substr(0, 4), row.outcome) << row.what << ": " << outcome.result;
    EXPECT_NE(outcome.result.find(row.text), std::string::npos) << row.what << ": " << outcome.result;
    EXPECT_EQ(outcome.said_afterwards, "") << row.what;
  }
}

TEST(KLineViolationTest, AnswerDamagedInAnyByteIsNoValue) {
  const base::ByteBuffer good = base::ByteBuffer::FromHex(kAnswer);
  for (std::size_t place = 0; place < good.Length(); ++place) {
    base::ByteBuffer damaged = good;
    damaged.SetAt(place, static_cast<std::uint8_t>(damaged.At(place) ^ 0x10U));
    const Outcome outcome = Play({{milliseconds(25), damaged.ToHex()}});
    EXPECT_EQ(outcome.result.substr(0, 4), "2000") << damaged.ToHex() << ": " << outcome.result;
    EXPECT_EQ(outcome.said_afterwards, "") << damaged.ToHex();
  }
}

TEST(KLineViolationTest, AnswerTruncatedAfterAnyByteIsNoValue) {
  for (std::size_t length = 1; length < kAnswer.size() / 2; ++length) {
    const Outcome outcome = Play({{milliseconds(25), kAnswer.substr(0, 2 * length)}});
    EXPECT_EQ(outcome.result.substr(0, 4), "2000") << length;
    EXPECT_NE(outcome.result.find("a truncated frame"), std::string::npos) << length << outcome.result;
    EXPECT_LT(outcome.took, milliseconds(200)) << length;
  }
}

TEST(KLineViolationTest, EndlessPendingEndsAtTheCap) {
  Script script;
  for (int answer = 0; answer < 100; ++answer) {
    script.push_back({milliseconds(25 + 1000 * answer), FromEcu("7F2178")});
  }
  const Outcome outcome = Play(script, "KeepAliveMs='0' Repeats='0' PendingCapMs='20000'");
  EXPECT_EQ(outcome.result.substr(0, 4), "2000");
  EXPECT_GE(outcome.took, milliseconds(19900));
  EXPECT_LE(outcome.took, milliseconds(20100));
}

TEST(KLineViolationTest, SomebodyElseSpeakingIntoTheRequestEndsIt) {
  KLineBench bench("KeepAliveMs='0' Repeats='0'");
  tests::Await(bench.Engine()->Initialise());
  // P3 after the initialisation, then the first byte of the request goes out.
  bench.loop->At(milliseconds(56), [&] { bench.line->EcuWrites("AA"); });
  const std::string failure = bench.Send("2101");
  EXPECT_EQ(failure.substr(0, 4), "2000");
  EXPECT_NE(failure.find("the echo is not what was sent"), std::string::npos) << failure;
  EXPECT_LT(bench.TesterSaid().size(), (FromTester("81") + FromTester("2101")).size());
}

struct StartRow {
  const char* what;
  const char* answer;
  const char* outcome;
  const char* text;
};

TEST(KLineViolationTest, StartsOfTheCommunicationThatAreNone) {
  const std::vector<StartRow> rows{
      {"refused", "7F8110", "2042", "startCommunication (81): generalReject (10)"},
      {"without key bytes", "C1", "2042", "an answer without key bytes"},
      {"key bytes of another standard", "C10808", "2042", "key bytes 0808 are not those of ISO 14230"},
      {"of another service", "7E", "2042", "another answer"}};
  for (const StartRow& row : rows) {
    KLineBench bench;
    bench.PullEcuOut();
    FrameReader reader;
    bench.line->ecu_hears = [&](base::ByteView bytes) {
      if (reader.Add(bytes[0]) != FrameReader::Result::kFrame) return;
      bench.loop->At(milliseconds(25), [&] { bench.line->EcuWrites(FromEcu(row.answer)); });
    };
    const std::string failure = bench.Send("2101");
    EXPECT_EQ(failure.substr(0, 4), row.outcome) << row.what << ": " << failure;
    EXPECT_NE(failure.find(row.text), std::string::npos) << row.what << ": " << failure;
    EXPECT_NE(failure.find("heard: 8110F18103"), std::string::npos) << row.what << ": " << failure;
    EXPECT_EQ(bench.TesterSaid(), FromTester("81")) << row.what;
  }
}

TEST(KLineViolationTest, StartThatIsForeverPendingEndsAtTheCapAndTheNextBeginsAnew) {
  KLineBench bench("PendingCapMs='20000'");
  bench.PullEcuOut();
  bool pending = true;
  FrameReader reader;
  std::function<void()> ask_for_time = [&] {
    if (!pending) return;
    bench.line->EcuWrites(FromEcu("7F8178"));
    bench.loop->At(std::chrono::seconds(1), ask_for_time);
  };
  bench.line->ecu_hears = [&](base::ByteView bytes) {
    if (reader.Add(bytes[0]) == FrameReader::Result::kFrame) bench.loop->At(milliseconds(25), ask_for_time);
  };
  const std::string failure = bench.Send("2101");
  EXPECT_EQ(failure.substr(0, 4), "2000") << failure;
  EXPECT_NE(failure.find("fast initialisation, startCommunication: no answer"), std::string::npos) << failure;
  EXPECT_LT(bench.loop->Now(), base::TimePoint(std::chrono::seconds(21)));
  pending = false;
  bench.PlugEcuIn();
  EXPECT_EQ(bench.Send("2101"), kGood);
}

TEST(KLineViolationTest, AnswersToTesterPresentThatAreNoneAre2046OnceAndNeverAnothersAnswer) {
  struct PresentRow {
    const char* fault;
    const char* next;
  };
  const std::vector<PresentRow> rows{
      {"late", "2046"}, {"missing", "2046"}, {"damaged", "2046"}, {"pending", "6101"}, {"foreign", "6101"}};
  for (const PresentRow& row : rows) {
    KLineBench bench(
        "KeepAliveMs='1000' Repeats='0' P2Ms='50'",
        std::string(KLineBench::kUsualSimulation) + "<Fault Request='PRESENT' Wire='" + row.fault + "'/>");
    tests::Await(bench.Engine()->Initialise());
    bench.loop->Advance(milliseconds(1600));
    EXPECT_EQ(bench.NumberOf("2101"), row.next) << row.fault;
    EXPECT_EQ(bench.Send("2101"), kGood) << row.fault;
    EXPECT_NE(bench.TesterSaid().find(FromTester("3E")), std::string::npos) << row.fault;
  }
}

TEST(KLineViolationTest, StopCommunicationThatIsNotAnsweredDelaysTheClosingByP2Only) {
  KLineBench bench("KeepAliveMs='0' P2Ms='50'");
  EXPECT_EQ(bench.Send("2101"), kGood);
  bench.PullEcuOut();
  const base::TimePoint before = bench.loop->Now();
  bench.CloseSession();
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("2101") + FromTester("82"));
  EXPECT_LT(bench.loop->Now() - before, milliseconds(55 + 30 + 55));
  EXPECT_FALSE(bench.line->open);
}

TEST(KLineViolationTest, TimesThatTheEcuDoesNotAgreeToStayAsTheyWere) {
  struct TimesRow {
    const char* what;
    std::string answer;
    const char* outcome;
  };
  std::string damaged = FromEcu("C303");
  damaged.back() ^= 1;
  const std::vector<TimesRow> rows{{"refused", FromEcu("7F8312"), "2001"}, {"damaged", damaged, "2000"}};
  for (const TimesRow& row : rows) {
    KLineBench bench("KeepAliveMs='0'");
    tests::Await(bench.Engine()->Initialise());
    ScriptedEcu ecu(bench, {{milliseconds(25), row.answer}});
    EXPECT_EQ(bench.NumberOf("8303000A00FF00"), row.outcome) << row.what;
    const std::size_t said = bench.line->log.size();
    EXPECT_EQ(bench.NumberOf("2101"), "2000") << row.what;
    ASSERT_GT(bench.line->log.size(), said) << row.what;
    const auto& log = bench.line->log;
    EXPECT_GE(log.at(said).begin - log.at(said - 1).end, milliseconds(55)) << row.what;
    EXPECT_GE(log.at(said + 1).begin - log.at(said).end, milliseconds(5)) << row.what;
  }
}

TEST(KLineViolationTest, FiveBaudKeyBytesThatAreDamagedAre2042) {
  for (const std::string key_bytes : {"A78F", "EF8E", "AF8F"}) {
    KLineBench bench("Init='slow'");
    bench.line->has_break = false;
    std::vector<std::string> ecu_says{"55" + key_bytes, "EF"};
    bench.line->ecu_hears = [&](base::ByteView) {
      if (ecu_says.empty()) return;
      bench.loop->At(milliseconds(30), [&bench, bytes = ecu_says.front()] { bench.line->EcuWrites(bytes); });
      ecu_says.erase(ecu_says.begin());
    };
    const std::string failure = bench.Send("2101");
    EXPECT_EQ(failure.substr(0, 4), "2042") << failure;
    EXPECT_NE(failure.find("key bytes " + key_bytes + " are not those of ISO 14230"), std::string::npos)
        << failure;
    EXPECT_EQ(bench.TesterSaid().size(), 4U) << "the address and the inverted key byte";
  }
}

TEST(KLineViolationTest, FiveBaudInitialisationsThatStopHalfway) {
  struct SlowRow {
    const char* ecu_bytes;
    const char* outcome;
    const char* text;
  };
  const std::vector<SlowRow> rows{{"", "2000", "no sync byte 55 within W1"},
                                  {"54", "2000", "no sync byte 55 within W1 (heard: 1054)"},
                                  {"55", "2000", "no key byte 1 within W2 (heard: 1055)"},
                                  {"55EF", "2000", "no key byte 2 within W3 (heard: 1055EF)"},
                                  {"55EF8F", "2000", "no inverted address EF within W4 (heard: 1055EF8F70)"},
                                  {"55080870", "2000", "no inverted address EF within W4"}};
  for (const SlowRow& row : rows) {
    KLineBench bench("Init='slow'");
    bench.line->has_break = false;
    bench.line->ecu_hears = [&](base::ByteView bytes) {
      if (bytes[0] != 0x10) return;  // the address, which comes once more after a handshake that broke off
      bench.loop->At(milliseconds(60), [&] { bench.line->EcuWrites(row.ecu_bytes); });
    };
    const std::string failure = bench.Send("2101");
    EXPECT_EQ(failure.substr(0, 4), row.outcome) << row.ecu_bytes << ": " << failure;
    EXPECT_NE(failure.find(row.text), std::string::npos) << row.ecu_bytes << ": " << failure;
  }
}

TEST(KLineViolationTest, LateAnswerIsNotTakenForTheNextRequests) {
  KLineBench bench("KeepAliveMs='0' Repeats='0' P2Ms='50'");
  tests::Await(bench.Engine()->Initialise());
  ScriptedEcu ecu(bench, {{milliseconds(90), FromEcu("6101FFFFFFFF")}});
  EXPECT_EQ(bench.NumberOf("2101"), "2000");
  bench.PlugEcuIn();
  EXPECT_EQ(bench.Send("2101"), kGood);
}

}  // namespace
}  // namespace korval::ecu
