// SPDX-License-Identifier: MIT
// The program is stopped at every moment of an exchange, and of what comes in front of it.
#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "KLineBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"
#include "tests/support/StoppableLoop.h"

namespace korval::ecu {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds kSpans[]{milliseconds(5), milliseconds(24), milliseconds(120), milliseconds(250)};

/// What the adapter hears waits while the program is stopped; what was written goes out.
class StoppableWire : public KLineWire {
 public:
  StoppableWire(std::shared_ptr<tests::StoppableLoop> loop, std::unique_ptr<KLineWire> wire)
      : loop_(std::move(loop)), wire_(std::move(wire)) {}

  void SetEvents(Events events) override {
    auto on_bytes = std::move(events.on_bytes);
    events.on_bytes = [loop = loop_, on_bytes = std::move(on_bytes)](base::ByteView bytes) {
      loop->Deliver([on_bytes, held = base::ByteBuffer(bytes)] { on_bytes(held.View()); });
    };
    wire_->SetEvents(std::move(events));
  }
  void Open(std::int32_t baud) override { wire_->Open(baud); }
  bool SetBreak(bool low) override { return wire_->SetBreak(low); }
  bool HoldsBreak() const override { return wire_->HoldsBreak(); }
  bool SetModemLines(std::optional<bool> rts, std::optional<bool> dtr) override {
    return wire_->SetModemLines(rts, dtr);
  }
  void Write(base::ByteView bytes) override { wire_->Write(bytes); }
  void Close() override { wire_->Close(); }

 private:
  std::shared_ptr<tests::StoppableLoop> loop_;
  std::unique_ptr<KLineWire> wire_;
};

/// A tester that can be stopped, on the line of a bench whose ECU goes on.
class BusyBench {
 public:
  /// Nothing is asked for a second time.
  explicit BusyBench(const std::string& function = "",
                     const std::string& simulation = KLineBench::kUsualSimulation)
      : bench("Repeats='0' KeepAliveMs='0' " + function, simulation) {
    bench.CloseSession();
    SessionEnvironment environment;
    environment.loop = loop;
    environment.open_kline_wire = [this](const std::string&) {
      return std::make_unique<StoppableWire>(loop, std::make_unique<MemoryWire>(bench.line));
    };
    bench.session = CreateSession(environment);
    tests::Await(bench.session->SetPort(KLineBench::kPort));
    bench.session->OfferEcuFile(tests::EcuFileOf(
        "engine.xml",
        KLineBench::Parse(KLineBench::FileText("Repeats='0' KeepAliveMs='0' " + function, simulation))));
  }

  void StopAfter(base::Duration delay, milliseconds span) {
    bench.loop->At(delay, [this, span] { loop->Stop(span); });
  }

  KLineBench bench;
  std::shared_ptr<tests::StoppableLoop> loop = std::make_shared<tests::StoppableLoop>(bench.loop);
};

TEST(BusyKLineTest, AStopAtAnyMomentOfAnExchangeLosesNothing) {
  for (const char* function : {"", "Echo='off'", "P4Ms='0'"}) {
    for (const milliseconds span : kSpans) {
      for (microseconds moment{0}; moment < milliseconds(140); moment += microseconds(2100)) {
        BusyBench busy(function);
        busy.bench.line->echo = std::string(function) != "Echo='off'";
        tests::Await(busy.bench.Engine()->Initialise());
        busy.StopAfter(moment, span);
        ASSERT_EQ(busy.bench.Send("2101").substr(0, 4), "6101")
            << function << " stopped after " << moment.count() << " us for " << span.count() << " ms";
      }
    }
  }
}

TEST(BusyKLineTest, AStopAroundResponsePendingLosesNothing) {
  for (const milliseconds span : kSpans) {
    for (microseconds moment{0}; moment < milliseconds(260); moment += microseconds(2900)) {
      BusyBench busy("",
                     std::string(KLineBench::kUsualSimulation) + "<Fault Request='READ' Wire='pending'/>");
      tests::Await(busy.bench.Engine()->Initialise());
      busy.StopAfter(moment, span);
      ASSERT_EQ(busy.bench.Send("2101").substr(0, 4), "6101")
          << "stopped after " << moment.count() << " us for " << span.count() << " ms";
    }
  }
}

// What an ECU would not take for a wake-up or a request is sent anew.
TEST(BusyKLineTest, AStopAtAnyMomentOfAFastInitialisationIsMended) {
  for (const milliseconds span : kSpans) {
    for (microseconds moment{0}; moment < milliseconds(450); moment += microseconds(3700)) {
      BusyBench busy;
      busy.StopAfter(moment, span);
      ASSERT_EQ(busy.bench.Send("2101").substr(0, 4), "6101")
          << "stopped after " << moment.count() << " us for " << span.count() << " ms";
      const auto& edges = busy.bench.line->edges;
      std::size_t low = edges.size();
      while (low > 0 && !edges[--low].low) {
      }
      const base::TimePoint pattern = edges.at(low).time;
      EXPECT_LE(edges.at(low + 1).time - pattern, milliseconds(25 + 5)) << moment.count();
      for (const MemoryLine::Entry& entry : busy.bench.line->log) {
        if (entry.begin < pattern) continue;
        EXPECT_LE(entry.begin - pattern, milliseconds(50 + 5)) << "the first byte behind the pattern";
        break;
      }
    }
  }
}

TEST(BusyKLineTest, AStopAtAnyMomentOfAFiveBaudHandshakeIsMended) {
  for (const milliseconds span : kSpans) {
    for (microseconds moment{0}; moment < milliseconds(520); moment += microseconds(3700)) {
      BusyBench busy("Init='slow'");
      busy.bench.line->has_break = false;
      busy.StopAfter(moment, span);
      ASSERT_EQ(busy.bench.Send("2101").substr(0, 4), "6101")
          << "stopped after " << moment.count() << " us for " << span.count() << " ms";
    }
  }
}

/// Stops the program for 24 of every 30 ms, for ever.
void KeepBusy(BusyBench& busy) {
  busy.loop->Stop(milliseconds(24));
  busy.bench.loop->At(milliseconds(30), [&busy] { KeepBusy(busy); });
}

TEST(BusyKLineTest, AComputerThatIsAlwaysTooBusySendsARequestInOnePiece) {
  BusyBench busy;
  tests::Await(busy.bench.Engine()->Initialise());
  KeepBusy(busy);
  EXPECT_EQ(busy.bench.Send("2101").substr(0, 4), "6101");
}

TEST(BusyKLineTest, AComputerThatIsAlwaysTooBusyForAWakeUpSaysSo) {
  BusyBench busy;
  KeepBusy(busy);
  const std::string failure = busy.bench.Send("2101");
  EXPECT_EQ(failure.substr(0, 4), "2000");
  EXPECT_NE(failure.find("the computer is too busy to wake the ECU up in time"), std::string::npos)
      << failure;
  EXPECT_NE(failure.find("--realtime"), std::string::npos) << failure;
}

}  // namespace
}  // namespace korval::ecu
