// SPDX-License-Identifier: MIT
// A tester and an ECU whose adapters take ten frames and no more, as interfaces of Linux do, on a bus of
// 500 kbit/s in model time.
#include <array>
#include <chrono>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ecu/can/SharedCanBus.h"
#include "tests/ecu/can/CanBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"

namespace korval::ecu {
namespace {

using testing::SizeIs;

constexpr std::size_t kQueue = 10;
constexpr std::size_t kLongest = 4095;

std::string Message(const std::string& head) {
  std::string message = head;
  while (message.size() < 2 * kLongest) message += "A5";
  return message;
}

class CanQueueTest : public testing::Test {
 protected:
  CanQueueTest() {
    bench.DisconnectEcu();
    const auto file = ReadEcuFile(base::LoadXmlText(bench.text, "abs.xml"));
    const auto parameters = IsoTpParameters::OfTester(file->Function(), file->Function().Can());
    SharedCanBus::Listener listener;
    listener.on_frame = [this](const CanFrame& frame) { ecu->FrameArrived(frame); };
    listener.on_sent = [this] { ecu->FramesSent(); };
    ecu_listener = std::make_shared<const SharedCanBus::Listener>(std::move(listener));
    ecu_bus.Listen(ecu_listener);
    ecu = std::make_unique<IsoTpEcu>(bench.loop, std::make_shared<SimulatedEcu>(file, bench.loop->Now()),
                                     parameters->OfOtherSide(),
                                     [this](const CanFrame& frame) { ecu_bus.Send(frame, ecu_listener); });
    bench.bus.SetQueue(kQueue);
  }

  base::Duration FrameTime() const {
    return bench.bus.TimeOf(CanFrame({1, false}, std::array<std::uint8_t, 8>{}));
  }
  /// The bus carried `frames` of 8 bytes and was used to 95 percent.
  void ExpectUsed(std::size_t frames) {
    EXPECT_THAT(bench.bus.log, SizeIs(frames));
    EXPECT_LE(bench.bus.times.back(), base::TimePoint(frames * FrameTime() * 100 / 95));
  }

  CanBench bench{CanBench::kIdentifiers, "<Simulation><Answer Request='2103' Response='" + Message("6103") +
                                             "'/><Answer Request='" + Message("3B04") +
                                             "' Response='7B04'/></Simulation>"};
  SharedCanBus ecu_bus{bench.loop, [this] { return bench.bus.Open(); }};
  std::unique_ptr<IsoTpEcu> ecu;
  std::shared_ptr<const SharedCanBus::Listener> ecu_listener;
};

constexpr std::size_t kFramesOfAMessage = 586;

TEST_F(CanQueueTest, LongestAnswerComesThroughInOrder) {
  EXPECT_EQ(bench.Send("2103"), Message("6103"));
  ExpectUsed(1 + kFramesOfAMessage + 1);
}

TEST_F(CanQueueTest, LongestRequestGoesThroughInOrder) {
  EXPECT_EQ(bench.Send(Message("3B04")), "7B04");
  ExpectUsed(kFramesOfAMessage + 1 + 1);
}

TEST_F(CanQueueTest, FiveHundredSingleFramesGoOutInOrderAtFullRate) {
  pugi::xml_document document;
  pugi::xml_node x = document.append_child("can").append_child("x");
  for (int i = 0; i < 500; ++i) {
    x.append_child("i").text() = 0x100 + i;
    x.append_child("s").append_child("d").text() = "0102030405060708";
  }
  tests::Await(bench.session->SendFrames(tests::FramesIn(document)));
  EXPECT_GE(bench.bus.log.size(), 500U - kQueue - 1) << "the last ones stand in the adapter's queue";
  bench.loop->Advance(std::chrono::milliseconds(10));
  ExpectUsed(500);
  for (int i = 0; i < 500; ++i) {
    const CanIdentifier identifier{static_cast<std::uint32_t>(0x100 + i), false};
    const auto data = base::ByteBuffer::FromHex("0102030405060708");
    EXPECT_EQ(bench.bus.log[static_cast<std::size_t>(i)],
              tests::FrameText(CanFrame(identifier, data.View())));
  }
}

TEST_F(CanQueueTest, RequestsGoOutAmongSingleFramesThatWait) {
  pugi::xml_document document;
  pugi::xml_node x = document.append_child("can").append_child("x");
  for (int i = 0; i < 100; ++i) {
    x.append_child("i").text() = 1;
    x.append_child("s").append_child("d").text() = "0102030405060708";
  }
  std::string answer;
  bench.loop->At(std::chrono::milliseconds(1), [&] { answer = bench.Send("2101"); });
  tests::Await(bench.session->SendFrames(tests::FramesIn(document)));
  EXPECT_EQ(answer, "61010000");
}

}  // namespace
}  // namespace korval::ecu
