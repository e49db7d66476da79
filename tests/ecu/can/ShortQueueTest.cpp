// SPDX-License-Identifier: MIT
// A session and a simulated ECU through the real adapter on interfaces that take ten frames, in real time.
#include <iostream>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/XmlFile.h"
#include "ecu/can/SharedCanBus.h"
#include "ecu/ecufile/EcuFile.h"
#include "ecu/session/SessionFactory.h"
#include "ecu/simulation/IsoTpEcu.h"
#include "platform/QtCanBus.h"
#include "tests/platform/QtTest.h"
#include "tests/platform/QueuedCanDevice.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"
#include "tests/support/WaitingQtLoop.h"

namespace korval::platform {
namespace {

using ecu::CanFrame;
using ecu::SharedCanBus;

constexpr std::size_t kLongest = 4095;

std::string Message(const std::string& head) {
  std::string message = head;
  while (message.size() < 2 * kLongest) message += "A5";
  return message;
}

// Generous times: this computer may be busy, and what is shown here is that nothing gets lost.
std::string File() {
  return "<xml><qor:Target><Function Name='ABS' RequestId='7E0' ResponseId='7E8' KeepAliveMs='0' "
         "P2Ms='30000' "
         "NAsMs='30000' NArMs='30000' NBsMs='30000' NCrMs='30000'/></qor:Target><Simulation>"
         "<Answer Request='2103' Response='" +
         Message("6103") + "'/><Answer Request='" + Message("3B04") +
         "' Response='7B04'/></Simulation></xml>";
}

class ShortQueueTest : public QtTest {
 protected:
  ShortQueueTest() {
    const auto file = ecu::ReadEcuFile(base::LoadXmlText(File(), "abs.xml"));
    const auto parameters = ecu::IsoTpParameters::OfTester(file->Function(), file->Function().Can());
    SharedCanBus::Listener hearing;
    hearing.on_frame = [this](const CanFrame& frame) {
      if (frame.identifier.number < 0x600) singles.push_back(frame.identifier.number);
      simulated->FrameArrived(frame);
    };
    hearing.on_sent = [this] { simulated->FramesSent(); };
    listener = std::make_shared<const SharedCanBus::Listener>(std::move(hearing));
    node.Listen(listener);
    simulated = std::make_unique<ecu::IsoTpEcu>(
        loop, std::make_shared<ecu::SimulatedEcu>(file, loop->Now()), parameters->OfOtherSide(),
        [this](const CanFrame& frame) { node.Send(frame, listener); });
    ecu::SessionEnvironment environment;
    environment.loop = loop;
    environment.port = "CAN:queued:can0";
    environment.open_can_bus = [this](const std::string&, const std::string&, std::int32_t) {
      return Open();
    };
    session = ecu::CreateSession(environment);
    tests::Await(*loop, session->SetPort(session->Port()));
    session->OfferEcuFile(tests::EcuFileOf("abs.xml", base::LoadXmlText(File(), "abs.xml")));
  }

  std::unique_ptr<QtCanBus> Open() {
    return std::make_unique<QtCanBus>(std::make_unique<QueuedCanDevice>(wire), "CAN interface can0 (queued)",
                                      QtCanBus::Watch{});
  }
  std::string Send(const std::string& request) {
    base::ByteBuffer answer;
    tests::Await(*loop, session->EcuByFunction("ABS")->Send(base::ByteBuffer::FromHex(request), answer));
    return answer.ToHex();
  }
  /// How much of the bus was used since `start`; the computer's load has a say in it, so it is only said.
  void ReportUse(const char* what, base::TimePoint start, base::Duration used_before) const {
    std::cout << what << ": " << 100 * (wire.used - used_before) / (wire.free_at - start)
              << " % of the bus\n";
  }

  QueuedCanDevice::Wire wire;
  std::shared_ptr<tests::WaitingQtLoop> loop = std::make_shared<tests::WaitingQtLoop>();
  SharedCanBus node{loop, [this] { return Open(); }};
  std::unique_ptr<ecu::IsoTpEcu> simulated;
  std::shared_ptr<const SharedCanBus::Listener> listener;
  std::shared_ptr<viator3::Session> session;
  std::vector<std::uint32_t> singles;
};

TEST_F(ShortQueueTest, LongestMessagesBothWays) {
  base::TimePoint start = loop->Now();
  EXPECT_EQ(Send("2103"), Message("6103"));
  ReportUse("4095 bytes from the ECU", start, base::Duration(0));
  start = loop->Now();
  const base::Duration used = wire.used;
  EXPECT_EQ(Send(Message("3B04")), "7B04");
  ReportUse("4095 bytes to the ECU", start, used);
}

TEST_F(ShortQueueTest, FiveHundredSingleFramesInOrder) {
  pugi::xml_document document;
  pugi::xml_node x = document.append_child("can").append_child("x");
  std::vector<std::uint32_t> expected;
  for (std::uint32_t i = 0; i < 500; ++i) {
    expected.push_back(i);
    x.append_child("i").text() = i;
    x.append_child("s").append_child("d").text() = "0102030405060708";
  }
  const base::TimePoint start = loop->Now();
  tests::Await(*loop, session->SendFrames(tests::FramesIn(document)));
  ASSERT_TRUE(RunUntil([&] { return singles.size() == 500; }));
  EXPECT_EQ(singles, expected);
  ReportUse("500 single frames", start, base::Duration(0));
}

}  // namespace
}  // namespace korval::platform
