// SPDX-License-Identifier: MIT
// What cables, serial chips and ECUs on the K-line do otherwise than most: lines of the adapter, wake-ups
// without a break, headers, functional addresses, key bytes and speeds.
#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "KLineBench.h"
#include "ecu/kline/SessionSpeed.h"
#include "tests/support/Await.h"

namespace korval::ecu {
namespace {

using std::chrono::milliseconds;

const std::string kValues = "61010C808202";

std::string Framed(HeaderForm form, const std::string& message) {
  return BuildFrame(form, 0x10, 0xF1, base::ByteBuffer::FromHex(message).View()).ToHex();
}

// Bytes of the tester at that speed, with the milliseconds since the first of them.
std::vector<std::pair<std::int64_t, int>> BytesAt(const MemoryLine& line, std::int32_t baud) {
  std::vector<std::pair<std::int64_t, int>> bytes;
  base::TimePoint first{};
  for (const auto& entry : line.log) {
    if (entry.who != MemoryLine::Who::kTester || entry.baud != baud) continue;
    if (bytes.empty()) first = entry.begin;
    bytes.emplace_back(std::chrono::duration_cast<milliseconds>(entry.begin - first).count(), entry.byte);
  }
  return bytes;
}

TEST(KLineCableTest, RtsAndDtrAreSetAsTheFileSaysAndElseLeftAlone) {
  KLineBench as_is;
  EXPECT_EQ(as_is.Send("2101"), kValues);
  EXPECT_TRUE(as_is.line->rts.empty());
  EXPECT_TRUE(as_is.line->dtr.empty());
  KLineBench set("Rts='off' Dtr='on'");
  EXPECT_EQ(set.Send("2101"), kValues);
  ASSERT_EQ(set.line->rts.size(), 1U);
  EXPECT_FALSE(set.line->rts.front().low);
  EXPECT_EQ(set.line->rts.front().time, base::TimePoint{});
  ASSERT_EQ(set.line->dtr.size(), 1U);
  EXPECT_TRUE(set.line->dtr.front().low);
}

TEST(KLineCableTest, LinesThatCannotBeSetAreSaidOnce) {
  KLineBench bench("Rts='off'");
  bench.line->has_modem_lines = false;
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(bench.Send("2101"), kValues);
  ASSERT_EQ(bench.notes.size(), 1U);
  EXPECT_NE(bench.notes.front().find("RTS and DTR cannot be set"), std::string::npos) << bench.notes.front();
}

TEST(KLineCableTest, LinesAreSetAgainWhenTheAdapterWasOut) {
  KLineBench bench("Rts='off'");
  EXPECT_EQ(bench.Send("2101"), kValues);
  bench.line->Unplug();
  bench.line->plugged = true;
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(bench.line->rts.size(), 2U);
}

TEST(KLineCableTest, FiveBaudAddressGoesOutOnTheLLineThatRtsDrives) {
  for (const bool inverted : {false, true}) {
    KLineBench bench(std::string("Init='slow' InitAddress='33' W0Ms='10' LLine='") +
                     (inverted ? "rts-inverted'" : "rts'"));
    bench.PullEcuOut();
    EXPECT_EQ(bench.NumberOf("2101"), "2000");
    ASSERT_FALSE(bench.line->rts.empty());
    EXPECT_EQ(bench.line->rts.front().low, inverted) << "the L line rests high";
    std::vector<std::pair<std::int64_t, bool>> levels;
    for (const auto& edge : bench.line->rts) {
      const auto time = std::chrono::duration_cast<milliseconds>(edge.time.time_since_epoch()).count();
      if (time >= 310) levels.emplace_back((time - 310) / 200, edge.low != inverted);
    }
    const std::vector<std::pair<std::int64_t, bool>> expected{{0, true}, {1, false}, {2, false}, {3, true},
                                                              {4, true}, {5, false}, {6, false}, {7, true},
                                                              {8, true}, {9, false}};
    EXPECT_EQ(levels, expected) << inverted;
  }
}

TEST(KLineCableTest, WakeUpAsASlowByteIsAsLongAsTiniL) {
  KLineBench bench("WakeUp='byte'");
  EXPECT_EQ(bench.Send("2101"), kValues);
  const auto& log = bench.line->log;
  EXPECT_EQ(log.at(0).byte, 0x00);
  EXPECT_EQ(log.at(0).baud, 360);
  EXPECT_EQ(log.at(1).byte, 0x81);
  EXPECT_EQ(log.at(1).baud, 10400);
  EXPECT_EQ(std::chrono::round<milliseconds>(log.at(1).begin - log.at(0).begin), milliseconds(50));
  for (const auto& edge : bench.line->edges) EXPECT_FALSE(edge.low);
  KLineBench longer("WakeUp='byte' TIniLMs='30' TWupMs='60'");
  EXPECT_EQ(longer.Send("2101"), kValues);
  EXPECT_EQ(longer.line->log.at(0).baud, 300);
}

TEST(KLineCableTest, ChipThatHoldsNoBreakIsWokenByAByteUnlessTheFileWantsABreak) {
  KLineBench by_itself;
  by_itself.line->holds_break = false;
  EXPECT_EQ(by_itself.Send("2101"), kValues);
  EXPECT_EQ(by_itself.line->log.at(0).baud, 360);
  KLineBench all_the_same("WakeUp='break'");
  all_the_same.line->holds_break = false;
  EXPECT_EQ(all_the_same.Send("2101"), kValues);
  EXPECT_EQ(all_the_same.line->log.at(0).byte, 0x81);
  EXPECT_TRUE(std::any_of(all_the_same.line->edges.begin(), all_the_same.line->edges.end(),
                          [](const auto& edge) { return edge.low; }));
}

TEST(KLineCableTest, SpeedOfTheSlowByteThatTheChipRefusesIsSaid) {
  KLineBench bench("WakeUp='byte'");
  bench.line->refused_baud = 360;
  EXPECT_EQ(bench.NumberOf("2101"), "1002");
  bench.line->refused_baud = 0;
  EXPECT_EQ(bench.Send("2101"), kValues);
}

TEST(KLineCableTest, FiveBaudAddressAsSlowBytesIsOneForEachLowBit) {
  KLineBench bench("Init='slow' InitAddress='33' WakeUp='byte'");
  EXPECT_EQ(bench.Send("2101"), kValues);
  const std::vector<std::pair<std::int64_t, int>> expected{{0, 0}, {600, 0}, {800, 0}, {1400, 0}, {1600, 0}};
  EXPECT_EQ(BytesAt(*bench.line, 50), expected);
}

TEST(KLineCableTest, HeaderOfRequestsIsFixedByTheFile) {
  struct Row {
    const char* header;
    HeaderForm form;
  };
  const std::vector<Row> rows{{"format", {false, false}},
                              {"format-length", {false, true}},
                              {"addresses", {true, false}},
                              {"addresses-length", {true, true}}};
  for (const Row& row : rows) {
    for (const std::string init : {"fast", "none"}) {
      KLineBench bench("Init='" + init + "' Header='" + row.header + "'");
      EXPECT_EQ(bench.Send("2101"), kValues) << row.header << init;
      const std::string start = init == "fast" ? FromTester("81") : "";
      EXPECT_EQ(bench.TesterSaid(), start + Framed(row.form, "2101")) << row.header << init;
    }
  }
}

TEST(KLineCableTest, RequestThatIsTooLongForTheFixedHeaderIsRefused) {
  KLineBench bench("Header='addresses'");
  EXPECT_EQ(bench.NumberOf("21" + std::string(2 * 63, '0')), "2012");
  EXPECT_EQ(bench.NumberOf("21" + std::string(2 * 62, '0')), "2001");
}

TEST(KLineCableTest, EcuOfAnotherHeaderIsSilent) {
  KLineBench bench("Header='format' Repeats='0'");
  bench.ecu.reset();
  const auto other = ReadEcuFile(
      KLineBench::Parse(KLineBench::FileText("Header='addresses'", KLineBench::kUsualSimulation)));
  bench.description = other;
  bench.PlugEcuIn();
  EXPECT_EQ(bench.NumberOf("2101"), "2000");
}

TEST(KLineCableTest, FunctionalInitialisationIsForAnyEcuAndRequestsForTheOneThatAnswers) {
  KLineBench bench("Functional='1'");
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(bench.TesterSaid(), "C133F18166" + FromTester("2101"));
  KLineBench other("Functional='1'");
  other.PullEcuOut();
  FrameReader reader;
  other.line->ecu_hears = [&](base::ByteView bytes) {
    if (reader.Add(bytes[0]) != FrameReader::Result::kFrame) return;
    const bool start = reader.Message()[0] == 0x81;
    const base::ByteBuffer answer = base::ByteBuffer::FromHex(start ? "C1EF8F" : kValues);
    other.loop->At(milliseconds(25), [&other, frame = BuildFrame({true, false}, 0xF1, 0x28, answer.View())] {
      other.line->EcuWrites(frame.View());
    });
  };
  EXPECT_EQ(other.Send("2101"), kValues);
  EXPECT_EQ(
      other.TesterSaid(),
      "C133F18166" + BuildFrame({true, false}, 0x28, 0xF1, base::ByteBuffer{0x21, 0x01}.View()).ToHex());
}

TEST(KLineCableTest, EcuThatIsNotAddressedAsAGroupDoesNotHearOne) {
  KLineBench bench("InitAddress='33'");
  bench.ecu->BytesArrived(base::ByteBuffer::FromHex("C133F18166").View());
  bench.loop->Advance(milliseconds(100));
  EXPECT_EQ(bench.line->Said(MemoryLine::Who::kEcu), "");
}

TEST(KLineCableTest, KeyBytesWithAWrongParityAreTakenAndNoted) {
  KLineBench bench("", " KeyBytes='6F8F'" + std::string(KLineBench::kUsualSimulation));
  EXPECT_EQ(bench.Send("2101"), kValues);
  ASSERT_EQ(bench.notes.size(), 1U);
  EXPECT_NE(bench.notes.front().find("Engine control: key bytes 6F8F have a wrong parity"), std::string::npos)
      << bench.notes.front();
}

TEST(KLineCableTest, KeyBytesThatAnnounceNothingLeaveTheUsualTimes) {
  KLineBench bench("KeepAliveMs='0'", " KeyBytes='D08F'" + std::string(KLineBench::kUsualSimulation));
  tests::Await(bench.Engine()->Initialise());
  const base::TimePoint quiet = bench.line->log.back().end;
  const std::size_t said = bench.line->log.size();
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_GE(bench.line->log.at(said).begin - quiet, milliseconds(55));
  EXPECT_TRUE(bench.notes.empty());
}

// From the last byte on the line to the wake-up behind it.
base::Duration SilenceBeforeLastStart(const MemoryLine& line) {
  const auto low =
      std::find_if(line.edges.rbegin(), line.edges.rend(), [](const auto& edge) { return edge.low; });
  base::TimePoint quiet{};
  for (const auto& entry : line.log) {
    if (entry.begin < low->time) quiet = std::max(quiet, entry.end);
  }
  return low->time - quiet;
}

TEST(KLineCableTest, EcuThatWasStoppedInOrderIsStartedAgainAfterP3) {
  KLineBench bench("KeepAliveMs='0'");
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(bench.Send("82"), "C2");
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_GE(SilenceBeforeLastStart(*bench.line), milliseconds(55));
  EXPECT_LT(SilenceBeforeLastStart(*bench.line), milliseconds(60));
}

TEST(KLineCableTest, SessionThatWasClosedInOrderIsBegunAgainAfterP3) {
  KLineBench bench("KeepAliveMs='0'");
  EXPECT_EQ(bench.Send("2101"), kValues);
  bench.CloseSession();
  bench.OpenSession();
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_LT(SilenceBeforeLastStart(*bench.line), milliseconds(60));
}

TEST(KLineCableTest, EcuThatDidNotAgreeToTheStopIsStartedAgainAfterTIdle) {
  KLineBench bench("KeepAliveMs='0'");
  EXPECT_EQ(bench.Send("2101"), kValues);
  bench.PullEcuOut();
  EXPECT_EQ(bench.NumberOf("82"), "2000");
  bench.PlugEcuIn();
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_GE(SilenceBeforeLastStart(*bench.line), milliseconds(300));
}

TEST(KLineCableTest, DiagnosticSessionHasItsOwnSpeedUntilTheNextInitialisation) {
  KLineBench bench("Session='85' SessionBaud='03'");
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(bench.TesterSaid(), FromTester("81") + FromTester("108503") + FromTester("2101"));
  EXPECT_EQ(BytesAt(*bench.line, 38400).size(), FromTester("2101").size() / 2);
  EXPECT_EQ(bench.Send("82"), "C2");
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(BytesAt(*bench.line, 10400).size(),
            2 * (FromTester("81").size() + FromTester("108503").size()) / 2);
}

TEST(KLineCableTest, SpeedOfASessionEndsWithItAndARefusedOneNeverBegins) {
  KLineBench bench("KeepAliveMs='0'", std::string(KLineBench::kUsualSimulation) +
                                          "<Answer Request='108604' Response='7F1012'/>");
  EXPECT_EQ(bench.Send("108505"), "508505");
  EXPECT_EQ(bench.line->baud, 10400);
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(bench.line->baud, 115200);
  EXPECT_EQ(bench.NumberOf("108604"), "2001");
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(bench.line->baud, 115200);
  EXPECT_EQ(bench.Send("20"), "60");
  EXPECT_EQ(bench.Send("2101"), kValues);
  EXPECT_EQ(bench.line->baud, 10400);
}

TEST(SessionSpeedTest, BytesStandForTheirSpeeds) {
  const std::vector<std::pair<std::uint8_t, std::int32_t>> rows{
      {0x01, 9600},  {0x02, 19200}, {0x03, 38400}, {0x04, 57600}, {0x05, 115200},
      {0x14, 10400}, {0x50, 38400}, {0x64, 57600}, {0x87, 124800}};
  for (const auto& [byte, baud] : rows) EXPECT_EQ(BitsPerSecond(byte), baud) << static_cast<int>(byte);
  EXPECT_EQ(BitsPerSecond(0x00), std::nullopt);
}

}  // namespace
}  // namespace korval::ecu
