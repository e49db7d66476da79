// SPDX-License-Identifier: MIT
// Every violation of the protocol by an ECU: the failure's number, and what the tester sends and does not
// send.
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ecu/can/CanBench.h"

namespace korval::ecu {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using Frames = std::vector<std::string>;

constexpr char kLongRequest[] = "3B03000102030405060708090A0B0C0D0E0F";
constexpr char kReadFrame[] = "7E0#0221015555555555";
constexpr char kFirstFrame[] = "7E0#10123B0300010203";
constexpr char kFlowControl[] = "7E0#3000005555555555";

/// An ECU that sends frames in answer to frames, whatever the protocol says.
class ScriptedEcu {
 public:
  explicit ScriptedEcu(std::map<std::string, Frames> script) : script_(std::move(script)) {
    bench.DisconnectEcu();
    bench.node = bench.bus.Open();
    CanBus::Events events;
    events.on_frame = [this](const CanFrame& frame) { FrameArrived(tests::FrameText(frame)); };
    bench.node->SetEvents(std::move(events));
  }

  /// What the tester sent.
  Frames Sent() const {
    Frames sent = bench.bus.log;
    std::erase_if(sent, [](const std::string& frame) { return !frame.starts_with("7E0#"); });
    return sent;
  }
  std::map<std::string, Frames>& Script() { return script_; }

  CanBench bench;

 private:
  void FrameArrived(const std::string& frame) {
    const auto answers = script_.find(frame);
    if (answers == script_.end()) return;
    for (const std::string& answer : answers->second) {
      const std::size_t data = answer.find('#') + 1;
      const auto number = static_cast<std::uint32_t>(std::stoul(answer.substr(0, data - 1), nullptr, 16));
      bench.node->Send(CanFrame({number, data == 9}, base::ByteBuffer::FromHex(answer.substr(data)).View()));
    }
  }

  std::map<std::string, Frames> script_;
};

struct Violation {
  const char* name;
  std::map<std::string, Frames> script;
  const char* request;
  const char* result;  ///< the answer, or the failure's number
  const char* text;
  Frames sent;
};

class CanViolationTest : public testing::TestWithParam<Violation> {};

TEST_P(CanViolationTest, HasItsNumberAndIsFollowedByNothingUnexpected) {
  const Violation& violation = GetParam();
  ScriptedEcu ecu(violation.script);
  EXPECT_EQ(ecu.bench.Send(violation.request), violation.result);
  EXPECT_THAT(ecu.bench.description, HasSubstr(violation.text));
  ecu.bench.loop->Advance(std::chrono::seconds(10));
  EXPECT_THAT(ecu.Sent(), ElementsAreArray(violation.sent));
  // Nothing of it is left: the next request is answered.
  ecu.Script() = {{kReadFrame, {"7E8#0461010019"}}};
  EXPECT_EQ(ecu.bench.Send("2101"), "61010019");
}

const Violation kViolations[] = {
    {"MissingFlowControl",
     {},
     kLongRequest,
     "2000",
     "after 6 of 18 bytes: no flow control within 1000 ms",
     {kFirstFrame}},
    {"FlowControlTooShort",
     {{kFirstFrame, {"7E8#3000"}}},
     kLongRequest,
     "2000",
     "no flow control",
     {kFirstFrame}},
    {"FlowControlOfAnotherEcu",
     {{kFirstFrame, {"7E9#300000"}}},
     kLongRequest,
     "2000",
     "no flow control",
     {kFirstFrame}},
    {"FlowControlMissingBehindABlock",
     {{kFirstFrame, {"7E8#300100"}}},
     kLongRequest,
     "2000",
     "after 13 of 18 bytes: no flow control",
     {kFirstFrame,
      "7E0#2104050607080"
      "90A"}},
    {"Overflow", {{kFirstFrame, {"7E8#320000"}}}, kLongRequest, "2012", "no room", {kFirstFrame}},
    {"ReservedFlowStatus",
     {{kFirstFrame, {"7E8#330000"}}},
     kLongRequest,
     "2003",
     "reserved status 03",
     {kFirstFrame}},
    {"EndlessWait",
     {{kFirstFrame, Frames(11, "7E8#310000")}},
     kLongRequest,
     "2000",
     "more than 10 wait frames",
     {kFirstFrame}},
    {"WrongSequenceNumber",
     {{kReadFrame, {"7E8#100A610100010203"}}, {kFlowControl, {"7E8#2204050607"}}},
     "2101",
     "2003",
     "consecutive frame 2 came instead of 1",
     {kReadFrame, kFlowControl}},
    {"LostConsecutiveFrame",
     {{kReadFrame, {"7E8#1014610100010203"}},
      {kFlowControl,
       {"7E8#2104050607080"
        "90A",
        "7E8#230405060708090A"}}},
     "2101",
     "2003",
     "after 13 of 20 bytes: consecutive frame 3 came instead of 2",
     {kReadFrame, kFlowControl}},
    {"AnswerThatBreaksOff",
     {{kReadFrame, {"7E8#1014610100010203"}},
      {kFlowControl,
       {"7E8#2104050607080"
        "90A"}}},
     "2101",
     "2000",
     "after 13 of 20 bytes: no consecutive frame within 1000 ms",
     {kReadFrame, kFlowControl}},
    {"AnswerThatIsTooLong",
     {{kReadFrame, {"7E8#1000000010006101"}}},
     "2101",
     "2003",
     "at most 4095 are taken",
     {kReadFrame, "7E0#3200005555555555"}},
    {"FirstFrameOfAShortMessage", {{kReadFrame, {"7E8#1007610100010203"}}}, "2101", "2000", "", {kReadFrame}},
    {"FirstFrameCutShort", {{kReadFrame, {"7E8#100A6101000102"}}}, "2101", "2000", "", {kReadFrame}},
    {"EmptySingleFrame", {{kReadFrame, {"7E8#00"}}}, "2101", "2000", "", {kReadFrame}},
    {"SingleFrameCutShort", {{kReadFrame, {"7E8#04610100"}}}, "2101", "2000", "", {kReadFrame}},
    {"OverlongSingleFrame", {{kReadFrame, {"7E8#0861010019000000"}}}, "2101", "2000", "", {kReadFrame}},
    {"FrameWithoutData", {{kReadFrame, {"7E8#"}}}, "2101", "2000", "", {kReadFrame}},
    {"UnknownTypeOfFrame", {{kReadFrame, {"7E8#4461010019"}}}, "2101", "2000", "", {kReadFrame}},
    {"WrongIdentifier", {{kReadFrame, {"7E9#0461010019"}}}, "2101", "2000", "", {kReadFrame}},
    {"IdentifierOf29Bits", {{kReadFrame, {"000007E8#0461010019"}}}, "2101", "2000", "", {kReadFrame}},
    {"ConsecutiveFrameThatNobodyAskedFor",
     {{kReadFrame, {"7E8#2161010019"}}},
     "2101",
     "2000",
     "",
     {kReadFrame}},
    {"AnswerToAnotherRequest", {{kReadFrame, {"7E8#0461020019"}}}, "2101", "2003", "61020019", {kReadFrame}},
    {"DoubledAnswer",
     {{kReadFrame, {"7E8#0461010019", "7E8#0461010020"}}},
     "2101",
     "61010019",
     "",
     {kReadFrame}},
    {"ForeignAnswerInFront",
     {{kReadFrame, {"7E9#0461010BAD", "7E8#027E00", "7E8#0461010019"}}},
     "2101",
     "61010019",
     "",
     {kReadFrame}},
    {"MessageInTheMiddleOfAnother",
     {{kReadFrame, {"7E8#1014610100010203"}},
      {kFlowControl,
       {"7E8#2104050607080"
        "90A",
        "7E8#0461010019"}}},
     "2101",
     "61010019",
     "",
     {kReadFrame, kFlowControl}},
    {"LongAnswerBehindResponsePending",
     {{kReadFrame, {"7E8#037F2178", "7E8#1008610100010203"}}, {kFlowControl, {"7E8#210405"}}},
     "2101",
     "6101000102030405",
     "",
     {kReadFrame, kFlowControl}},
};

INSTANTIATE_TEST_SUITE_P(Rows, CanViolationTest, testing::ValuesIn(kViolations),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CanViolationTest, LateAnswerIsNotTakenForTheNextOnes) {
  ScriptedEcu ecu({});
  ecu.bench.loop->At(std::chrono::milliseconds(160), [&] { ecu.bench.bus.InjectHex(0x7E8, "0461010BAD"); });
  EXPECT_EQ(ecu.bench.Send("2101"), "2000");
  ecu.bench.loop->Advance(std::chrono::milliseconds(20));
  ecu.Script() = {{"7E0#0221025555555555", {"7E8#0461020019"}}};
  EXPECT_EQ(ecu.bench.Send("2102"), "61020019");
}

struct FloodRow {
  const char* name;
  const char* frame;
  const char* result;
};

class CanFloodTest : public testing::TestWithParam<FloodRow> {};

TEST_P(CanFloodTest, OnOurIdentifierDoesNotProlongTheWaitForASilentEcu) {
  ScriptedEcu ecu({});
  const std::function<void()> flood = [&] {
    ecu.bench.bus.InjectHex(0x7E8, GetParam().frame);
    ecu.bench.loop->At(std::chrono::milliseconds(20), flood);
  };
  flood();
  EXPECT_EQ(ecu.bench.Send("2101"), GetParam().result);
  EXPECT_LT(ecu.bench.loop->Now(), base::TimePoint(2 * std::chrono::milliseconds(150))) << "P2";
  EXPECT_THAT(ecu.Sent(), ElementsAre(kReadFrame));
}

INSTANTIATE_TEST_SUITE_P(Rows, CanFloodTest,
                         testing::Values(FloodRow{"ForeignSingleFrame", "027E00", "2003"},
                                         FloodRow{"StrayConsecutiveFrame", "2161010019", "2000"},
                                         FloodRow{"StrayFlowControl", "300000", "2000"},
                                         FloodRow{"UnknownType", "4461010019", "2000"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CanViolationTest, AnswerToAnotherTargetAddressIsAnothers) {
  CanBench bench(
      "Name='ABS' RequestId='7E0' ResponseId='7E8' Addressing='extended' Address='28' Tester='F1' "
      "KeepAliveMs='0'");
  bench.DisconnectEcu();
  bench.loop->At(std::chrono::milliseconds(1), [&] { bench.bus.InjectHex(0x7E8, "F20461010019"); });
  bench.loop->At(std::chrono::milliseconds(2), [&] { bench.bus.InjectHex(0x7E8, "0461010019"); });
  EXPECT_EQ(bench.Send("2101"), "2000");
  bench.loop->At(std::chrono::milliseconds(1), [&] { bench.bus.InjectHex(0x7E8, "F10461010019"); });
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

TEST(CanViolationTest, ReservedSeparationTimeCountsAsTheLongest) {
  for (const char* st_min : {"80", "F0", "FA", "FF"}) {
    ScriptedEcu ecu(
        {{kFirstFrame, {std::string("7E8#3000") + st_min}}, {"7E0#220B0C0D0E0F5555", {"7E8#027B03"}}});
    EXPECT_EQ(ecu.bench.Send(kLongRequest), "7B03");
    // First frame, flow control, two consecutive frames, answer.
    const auto& times = ecu.bench.bus.times;
    ASSERT_EQ(times.size(), 5U);
    EXPECT_GE(times[3] - times[2], std::chrono::milliseconds(127)) << st_min;
    EXPECT_LT(times[3] - times[2], std::chrono::milliseconds(128)) << st_min;
  }
}

// Lets `happen` happen once an answer's first frame is on the bus, and with it while our flow control is out.
std::string SendWithTroubleAtTheFlowControl(CanBench& bench, const std::function<void()>& happen) {
  bench.bus.filter = [&](const CanFrame& frame) {
    if (tests::FrameText(frame).starts_with("7E8#10")) happen();
    return true;
  };
  std::string result = bench.Send("2102");
  bench.bus.filter = nullptr;
  return result;
}

TEST(CanViolationTest, FlowControlThatDoesNotGetOntoTheBusIs1015BehindNAr) {
  CanBench bench;
  EXPECT_EQ(SendWithTroubleAtTheFlowControl(bench, [&] { bench.bus.SetSilent(true); }), "1015");
  EXPECT_THAT(bench.description, HasSubstr("flow control did not get onto the bus within 1000 ms (N_Ar)"));
  EXPECT_EQ(bench.loop->Now() - bench.bus.times.back(), std::chrono::seconds(1));
}

TEST(CanViolationTest, FlowControlThatFindsTheQueueFullIs1015BehindNAr) {
  CanBench bench;
  EXPECT_EQ(SendWithTroubleAtTheFlowControl(bench, [&] { bench.bus.SetQueue(0); }), "1015");
  EXPECT_EQ(bench.loop->Now() - bench.bus.times.back(), std::chrono::seconds(1));
  EXPECT_THAT(bench.description, HasSubstr("the transmit queue of the CAN interface stayed full"));
  bench.bus.SetQueue(10);
  EXPECT_EQ(bench.Send("2101"), "61010019");
}

// Whatever byte of an answer is damaged on the way, the request ends with the damaged data or with one of
// three numbers, and the next one is answered.
TEST(CanViolationTest, AnswerDamagedByteByByte) {
  for (std::size_t byte = 0; byte < 8; ++byte) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      CanBench bench;
      bench.bus.filter = [=](CanFrame& frame) {
        if (frame.identifier.number == 0x7E8) frame.data[byte] ^= static_cast<std::uint8_t>(1U << bit);
        return true;
      };
      const std::string result = bench.Send("2101");
      if (byte == 0) {
        EXPECT_THAT(result, AnyOf("2000", "6101001955", "610100195555")) << bit;
      } else if (byte <= 2) {
        EXPECT_EQ(result, "2003") << byte << "." << bit;
      } else {
        EXPECT_THAT(result, HasSubstr("6101")) << byte << "." << bit;
      }
      bench.bus.filter = nullptr;
      EXPECT_EQ(bench.Send("2101"), "61010019") << byte << "." << bit;
    }
  }
}

TEST(CanViolationTest, LongAnswerDamagedInEachControlByte) {
  for (int frame_number = 0; frame_number < 6; ++frame_number) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      CanBench bench;
      int seen = 0;
      bench.bus.filter = [&](CanFrame& frame) {
        if (frame.identifier.number == 0x7E8 && seen++ == frame_number) {
          frame.data[0] ^= static_cast<std::uint8_t>(1U << bit);
        }
        return true;
      };
      EXPECT_THAT(bench.Send("2102"), AnyOf("2000", "2003")) << frame_number << "." << bit;
      bench.bus.filter = nullptr;
      EXPECT_EQ(bench.Send("2101"), "61010019") << frame_number << "." << bit;
    }
  }
}

TEST(CanViolationTest, AnswerCutShortAtEachLength) {
  for (std::uint8_t length = 0; length < 5; ++length) {
    CanBench bench;
    bench.bus.filter = [=](CanFrame& frame) {
      if (frame.identifier.number == 0x7E8) frame.length = length;
      return true;
    };
    EXPECT_EQ(bench.Send("2101"), "2000") << int{length};
    bench.bus.filter = nullptr;
    EXPECT_EQ(bench.Send("2101"), "61010019") << int{length};
  }
}

struct FaultRow {
  const char* wire;
  const char* short_result;
  const char* long_result;
};

class CanWireFaultTest : public testing::TestWithParam<FaultRow> {};

TEST_P(CanWireFaultTest, OfTheSimulatedEcuHasItsNumberAndIsGoneTheNextTime) {
  const std::string fault = std::string("' Wire='") + GetParam().wire + "'/>";
  const std::string simulation =
      "<Simulation><Fault Request='READ" + fault + "<Fault Request='READ_LONG" + fault + "</Simulation>";
  const auto result = [&](const char* request) {
    CanBench bench(CanBench::kIdentifiers, simulation);
    std::string first = bench.Send(request);
    EXPECT_EQ(bench.Send(request).substr(0, 4),
              base::HexText(std::array{std::uint8_t{0x61}, base::ByteBuffer::FromHex(request).At(1)}));
    return first.substr(0, 4);
  };
  EXPECT_EQ(result("2101"), GetParam().short_result);
  EXPECT_EQ(result("2102"), GetParam().long_result);
}

INSTANTIATE_TEST_SUITE_P(Rows, CanWireFaultTest,
                         testing::Values(FaultRow{"late", "2000", "2000"},
                                         FaultRow{"missing", "2000", "2000"},
                                         FaultRow{"damaged", "2000", "2003"},
                                         FaultRow{"pending", "6101", "6102"},
                                         FaultRow{"foreign", "6101", "6102"}),
                         [](const auto& row) { return std::string(row.param.wire); });

}  // namespace
}  // namespace korval::ecu
