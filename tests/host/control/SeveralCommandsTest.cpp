// SPDX-License-Identifier: MIT
// Commands of both transports and readings by hand at the same time, on our own session and simulated ECUs
// that take their time.
#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/Job.h"
#include "ecu/session/SessionFactory.h"
#include "tests/host/control/ControlBench.h"
#include "tests/support/CommandBench.h"
#include "tests/support/ProtocolBench.h"
#include "tests/support/TempFolder.h"

namespace korval::tests {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int kEvents = 100'000;

std::string EcuFile(const std::string& function, int latency, int keep_alive = 0) {
  return "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='" + function +
         "' Protocol='KWP2000' KeepAliveMs='" + std::to_string(keep_alive) +
         "'/><Requests>"
         "<Request Name='READ'><Sent Bytes='2101'/><Received MinBytes='3'>"
         "<DataItem Name='Speed' Ref='1' FirstByte='3' BitsCount='16'/></Received></Request>"
         "<Request Name='WRITE'><Sent Bytes='3B0100'><DataItem Name='Limit' FirstByte='3'/></Sent>"
         "<Received MinBytes='2'/></Request></Requests></qor:Target>"
         "<Simulation LatencyMs='" +
         std::to_string(latency) + "'/></xml>";
}

base::ByteBuffer Frame(std::uint16_t code, const Fields& fields = {}) {
  return Request(code, base::HexText(fields.View()));
}

base::ByteBuffer Get(std::int32_t lun, const std::string& name) {
  return Frame(14, Fields().Word(lun).String(name));
}

base::ByteBuffer Select(const std::string& section) {
  return Frame(3, Fields().String("bench.xml").String(section).Word(0));
}

class SeveralCommandsTest : public ControlBench {
 protected:
  SeveralCommandsTest() {
    folder_.Write("bench.xml",
                  "<xml><ecu name='FAST' url='fast.xml'><data name='Speed' shortname='N'/></ecu>"
                  "<ecu name='SLOW' url='slow.xml'><data name='Speed' shortname='N'/></ecu></xml>");
    folder_.Write("fast.xml", EcuFile("FAST", 300));
    folder_.Write("slow.xml", EcuFile("SLOW", 4000));
    Store("AsapFolder", folder_.Path());
    Store("KorvFolder", folder_.Path());
    parts.create_session = [this] {
      ecu::SessionEnvironment environment;
      environment.loop = loop;
      environment.port = "SIM";
      environment.ecu_folder = folder_.Path();
      return ecu::CreateSession(environment);
    };
    control_ = Started();
    control_->ToggleSerialPort();
    tcp->Connect();
  }
  ~SeveralCommandsTest() override { control_->Terminate(); }

  void SelectBoth() {
    for (const auto& frame :
         {Frame(2), Frame(20, Fields().Word(0x0201).String("rig")), Select("FAST"), Select("SLOW")}) {
      tcp->Arrive(frame);
      loop->Advance(seconds(20));
    }
    ASSERT_EQ(tcp->TakeSent().size(), 4U);
  }

  TempFolder folder_;
  std::shared_ptr<host::ServerControl> control_;
};

TEST_F(SeveralCommandsTest, EachIsAnsweredWhenItsOwnEcuHasAnswered) {
  SelectBoth();
  serial->Arrive(Get(1, "N"));
  tcp->Arrive(Get(2, "N"));
  loop->Advance(milliseconds(299));
  EXPECT_TRUE(serial->TakeWritten().empty());
  loop->Advance(milliseconds(1));
  EXPECT_EQ(serial->TakeWritten().size(), 1U);
  loop->Advance(milliseconds(3699));
  EXPECT_TRUE(tcp->TakeSent().empty());
  loop->Advance(milliseconds(1));
  EXPECT_EQ(tcp->TakeSent().size(), 1U);
}

TEST_F(SeveralCommandsTest, AReadingByHandHoldsUpNoCommand) {
  SelectBoth();
  control_->ReadIdent();
  loop->Advance(milliseconds(1000));
  ForgetTrace();
  tcp->Arrive(Get(1, "N"));
  loop->Advance(milliseconds(300));
  EXPECT_EQ(tcp->TakeSent().size(), 1U);
  EXPECT_EQ(Trace().find("Read Ecu Ident"), std::string::npos) << "the slow one is still being asked";
  loop->Advance(seconds(4));
  EXPECT_NE(Trace().find("Read Ecu Ident : SLOW"), std::string::npos);
}

TEST_F(SeveralCommandsTest, ThoseOfOneEcuTakeTurns) {
  SelectBoth();
  serial->Arrive(Get(1, "N"));
  tcp->Arrive(Get(1, "N"));
  loop->Advance(milliseconds(300));
  EXPECT_EQ(serial->TakeWritten().size(), 1U);
  EXPECT_TRUE(tcp->TakeSent().empty());
  loop->Advance(milliseconds(300));
  EXPECT_EQ(tcp->TakeSent().size(), 1U);
}

TEST_F(SeveralCommandsTest, WhateverHappensTheNextClientIsServed) {
  folder_.Write("fast.xml", EcuFile("FAST", 300, 2000));
  std::mt19937 random(20261122);  // NOLINT: every run the same
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  const auto any_frame = [&] {
    switch (below(9)) {
      case 0:
        return Frame(2);
      case 1:
        return Frame(20, Fields().Word(0x0201).String("rig"));
      case 2:
        return Select(below(2) ? "FAST" : "SLOW");
      case 3:
        return Frame(12, Fields().Word(1 + static_cast<std::int32_t>(below(2))).Word(0).Word(1).String("N"));
      case 4:
        return Frame(19);
      case 5:
        return Frame(15, Fields().Word(1).String("Limit").Real(1));
      case 6:
        return Frame(114, Fields()
                              .Word(1 + static_cast<std::int32_t>(below(2)))
                              .String(below(2) ? "readdtc" : "qorexecreq(READ)"));
      case 7:
        return below(4) ? Get(1, "N") : Frame(50);
      default:
        return Get(1 + static_cast<std::int32_t>(below(2)), "N");
    }
  };
  const std::vector<std::function<void()>> events = {
      [&] {
        if (tcp->HasClient()) tcp->Leave();
      },
      [&] { tcp->Connect(); },
      [&] { control_->ResetAll(); },
      [&] { control_->ToggleSerialPort(); },
      [&] { control_->SelectDiagInterface(); },
      [&] {
        if (const auto open = control_->Session()) base::Job::Run(open->Close());
      },
      [&] {
        serial->Arrive(base::ByteBuffer{0x00, 0x06, 0x00});
      },
  };
  for (int i = 0; i < kEvents; ++i) {
    const unsigned kind = below(40);
    // What comes from outside comes as an event.
    loop->At(milliseconds(below(200)), [&, kind] {
      if (kind < 14) {
        if (tcp->HasClient()) tcp->Arrive(any_frame());
      } else if (kind < 22) {
        if (serial->IsOpen()) serial->Arrive(any_frame());
      } else if (kind < 25) {
        control_->ReadData();
      } else if (kind < 28) {
        control_->ReadIdent();
      } else if (kind < 30) {
        events[below(static_cast<unsigned>(events.size()))]();
      }
    });
    loop->Advance(milliseconds(below(60)));
    if (i % 100 == 0) {
      log.clear();
      ForgetTrace();
      tcp->TakeSent();
      serial->TakeWritten();
    }
  }
  loop->Advance(seconds(600));
  tcp->Connect();
  loop->Advance(seconds(1));
  tcp->TakeSent();
  SelectBoth();
  tcp->Arrive(Get(1, "N"));
  loop->Advance(seconds(1));
  EXPECT_EQ(tcp->TakeSent().size(), 1U);
  EXPECT_LT(loop->PendingEvents(), 20U);
}

}  // namespace
}  // namespace korval::tests
