// SPDX-License-Identifier: MIT
// A session and a simulated ECU through the real adapter on Qt's virtual bus. That is a server on the
// loopback interface, which each test process has on a port of its own.
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/Failure.h"
#include "base/XmlFile.h"
#include "ecu/ecufile/EcuFile.h"
#include "ecu/session/SessionFactory.h"
#include "ecu/simulation/IsoTpEcu.h"
#include "platform/QtCanBus.h"
#include "tests/platform/QtTest.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"
#include "tests/support/WaitingQtLoop.h"

namespace korval::platform {
namespace {

using ecu::CanBus;
using ecu::CanFrame;

constexpr char kFile[] =
    "<xml><qor:Target><Function Name='ABS' RequestId='7E0' ResponseId='7E8' P2Ms='20000'/><Requests>"
    "<Request Name='READ'><Sent Bytes='2101'/><Received MinBytes='40'>"
    "<DataItem Name='Text' FirstByte='3' BitsCount='304' Coding='ascii'/></Received></Request>"
    "<Request Name='WRITE'><Sent Bytes='3B01'><DataItem Name='Text' FirstByte='3' BitsCount='304' "
    "Coding='ascii'/>"
    "</Sent></Request></Requests></qor:Target><Simulation><Signal Item='Text' Value='over a real "
    "bus'/></Simulation></xml>";

std::string Channel() { return "tcp://127.0.0.1:" + std::to_string(20000 + ::getpid() % 20000) + "/can0"; }

class VirtualCanTest : public QtTest {
 protected:
  VirtualCanTest() {
    node = std::make_unique<QtCanBus>("virtualcan", Channel(), 500000);
    const auto file = ecu::ReadEcuFile(base::LoadXmlText(kFile, "abs.xml"));
    const auto parameters = ecu::IsoTpParameters::OfTester(file->Function(), file->Function().Can());
    simulated = std::make_unique<ecu::IsoTpEcu>(loop, std::make_shared<ecu::SimulatedEcu>(file, loop->Now()),
                                                parameters->OfOtherSide(),
                                                [this](const CanFrame& frame) { node->Send(frame); });
    CanBus::Events events;
    events.on_frame = [this](const CanFrame& frame) {
      heard = true;
      simulated->FrameArrived(frame);
    };
    events.on_sent = [this] { simulated->FramesSent(); };
    node->SetEvents(std::move(events));
  }

  std::shared_ptr<viator3::Session> OpenSession() {
    ecu::SessionEnvironment environment;
    environment.loop = loop;
    environment.port = "CAN:virtualcan:" + Channel();
    environment.open_can_bus = [](const std::string& plugin, const std::string& interface,
                                  std::int32_t bitrate) {
      return std::make_unique<QtCanBus>(plugin, interface, bitrate);
    };
    auto session = ecu::CreateSession(environment);
    tests::Await(*loop, session->SetPort(session->Port()));
    session->OfferEcuFile(tests::EcuFileOf("abs.xml", base::LoadXmlText(kFile, "abs.xml")));
    return session;
  }
  /// A virtual bus loses what is sent before the other end's connection stands.
  void WaitForTheConnection(viator3::Session& session) {
    pugi::xml_document frame;
    frame.load_string("<can><x><i>1</i><s><d>00</d></s></x></can>");
    ASSERT_TRUE(RunUntil([&] {
      if (!heard) tests::Await(*loop, session.SendFrames(tests::FramesIn(frame)));
      return heard;
    }));
  }

  /// A frame that is on its way through this process's own relay when a deadline falls due is delivered
  /// first.
  void ExpectFramesBeforeDeadlines() {
    QtCanBus other("virtualcan", Channel(), 500000);
    int frames = 0;
    CanBus::Events events;
    events.on_frame = [&](const CanFrame&) { ++frames; };
    other.SetEvents(std::move(events));
    const CanFrame frame({0x100, false}, {});
    ASSERT_TRUE(RunUntil([&] {
      if (frames == 0) node->Send(frame);
      return frames > 0;
    }));
    RunQueuedEvents();
    for (int round = 0; round < 100; ++round) {
      frames = 0;
      bool passed = false;
      const auto deadline = loop->CreateDeadline([&] { passed = true; });
      node->Send(frame);
      deadline->Set(loop->Now());
      ASSERT_TRUE(RunUntil([&] { return passed; }));
      EXPECT_GE(frames, 1) << round;
    }
  }

  std::shared_ptr<tests::WaitingQtLoop> loop = std::make_shared<tests::WaitingQtLoop>();
  std::unique_ptr<QtCanBus> node;
  std::unique_ptr<ecu::IsoTpEcu> simulated;
  bool heard = false;
};

// One test: the virtual bus does not survive its application.
TEST_F(VirtualCanTest, LongValuesAreReadAndWrittenUntilAClosedSessionEndsAWait) {
  const auto session = OpenSession();
  WaitForTheConnection(*session);
  const auto abs = session->EcuByFunction("ABS");
  const auto instance = session->CreateInstance("qor4inst.abs");
  instance->SetProtocol(abs);
  EXPECT_EQ(tests::Await(*loop, instance->Get("Text")), base::Variant("over a real bus"));
  tests::Await(*loop, instance->Set("Text", std::string("there and back in many frames")));
  EXPECT_EQ(tests::Await(*loop, instance->Get("Text")), base::Variant("there and back in many frames"));
  ExpectFramesBeforeDeadlines();

  node->SetEvents({});
  const auto timer = loop->CreateTimer([&] { tests::Await(*loop, session->Close()); });
  timer->Start(std::chrono::milliseconds(1));
  base::ByteBuffer answer;
  try {
    tests::Await(*loop, abs->Send({0x21, 0x01}, answer));
    ADD_FAILURE() << "answered";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), 1000);
  }
}

}  // namespace
}  // namespace korval::platform
