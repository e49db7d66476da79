// SPDX-License-Identifier: MIT
// Several ECUs, and several sessions, on one K-line.
#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "KLineBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"

namespace korval::ecu {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const std::string kGood = "61010C808202";

/// A second ECU, ABS, at the address 28, that knows tester present only.
class TwoEcus : public KLineBench {
 public:
  explicit TwoEcus(const std::string& engine = "", const std::string& brake = "") : KLineBench(engine) {
    const std::string text =
        "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='ABS' Address='28' KeepAliveMs='0' " +
        brake + "/></qor:Target></xml>";
    session->OfferEcuFile(tests::EcuFileOf("brake.xml", Parse(text)));
    const auto file = ReadEcuFile(Parse(text));
    brake_ =
        std::make_unique<KLineEcu>(loop, file->Function(), std::make_shared<SimulatedEcu>(file, loop->Now()),
                                   [this](base::ByteView bytes) { line->EcuWrites(bytes); });
    line->ecu_hears = [this](base::ByteView bytes) {
      if (ecu) ecu->BytesArrived(bytes);
      brake_->BytesArrived(bytes);
    };
  }

  /// The answer to tester present, or the number and text of the failure.
  std::string AskBrake() {
    try {
      base::ByteBuffer answer;
      tests::Await(session->EcuByFunction("ABS")->Send(base::ByteBuffer{0x3E}, answer));
      return answer.ToHex();
    } catch (const base::Failure& failure) {
      return std::to_string(failure.Number()) + " " + failure.Description();
    }
  }

 private:
  std::unique_ptr<KLineEcu> brake_;
};

TEST(SharedLineTest, TwoEcusTakeTurns) {
  TwoEcus bench;
  std::string inner;
  bench.loop->At(milliseconds(400), [&] { inner = bench.AskBrake(); });
  for (int request = 0; request < 20; ++request) EXPECT_EQ(bench.Send("2101"), kGood);
  EXPECT_EQ(inner, "7E");
  bench.loop->Advance(seconds(20));
  base::TimePoint end{};
  for (const auto& entry : bench.line->log) {
    EXPECT_GE(entry.begin, end) << "two speak at the same time";
    end = entry.end;
  }
}

TEST(SharedLineTest, SpeedThatIsRefusedIs1002AndTheOtherEcuGoesOn) {
  TwoEcus bench("", "Baud='4000000'");
  bench.line->refused_baud = 4000000;
  EXPECT_EQ(bench.Send("2101"), kGood);
  for (int attempt = 0; attempt < 2; ++attempt) {
    const std::string refused = bench.AskBrake();
    EXPECT_EQ(refused.substr(0, 4), "1002") << refused;
    EXPECT_NE(refused.find("cannot be set to this speed"), std::string::npos) << refused;
    EXPECT_EQ(bench.Send("2101"), kGood);
  }
}

TEST(SharedLineTest, EcuThatIsForeverPendingHoldsTheLineUpToItsCapOnly) {
  TwoEcus bench("KeepAliveMs='0' PendingCapMs='10000'");
  tests::Await(bench.Engine()->Initialise());
  bench.ecu.reset();
  std::function<void()> ask_for_time = [&] {
    bench.line->EcuWrites(FromEcu("7F2178"));
    bench.loop->At(seconds(1), ask_for_time);
  };
  bench.loop->At(milliseconds(110), ask_for_time);
  EXPECT_EQ(bench.NumberOf("2101"), "2000");
  const base::TimePoint before = bench.loop->Now();
  EXPECT_EQ(bench.AskBrake(), "7E");
  EXPECT_LT(bench.loop->Now() - before, seconds(1));
}

TEST(SharedLineTest, SessionMayBeginWhileTheOneBeforeTakesItsLeave) {
  KLineBench bench;
  EXPECT_EQ(bench.Send("2101"), kGood);
  const auto former = bench.session;
  std::string next;
  bench.loop->At(milliseconds(20), [&] {
    bench.OpenSession();
    next = bench.Send("2101");
  });
  tests::Await(former->Close());
  bench.loop->Advance(milliseconds(20));
  EXPECT_EQ(next, kGood);
  EXPECT_EQ(bench.TesterSaid(),
            FromTester("81") + FromTester("2101") + FromTester("82") + FromTester("81") + FromTester("2101"));
  EXPECT_TRUE(bench.line->open);
  EXPECT_EQ(bench.Send("2101"), kGood);
  bench.CloseSession();
  EXPECT_FALSE(bench.line->open);
}

TEST(SharedLineTest, ObjectsOfASessionThatHasEndedKeepNoLineOpen) {
  KLineBench bench;
  const auto ecu = bench.Engine();
  tests::Await(ecu->Initialise());
  bench.session.reset();
  bench.AwaitLeave();
  EXPECT_FALSE(bench.line->open);
  bench.OpenSession();
  EXPECT_EQ(bench.Send("2101"), kGood);
}

TEST(SharedLineTest, LineLostWhileASessionTakesItsLeaveIsOpenedAnewOrRefused) {
  KLineBench bench;
  EXPECT_EQ(bench.Send("2101"), kGood);
  const auto former = bench.session;
  std::int32_t refused = 0;
  std::string next;
  bench.loop->At(milliseconds(20), [&] {
    bench.line->Unplug();
    try {
      bench.OpenSession();
    } catch (const base::Failure& failure) {
      refused = failure.Number();
    }
    bench.line->plugged = true;
    bench.OpenSession();
    next = bench.Send("2101");
  });
  tests::Await(former->Close());
  bench.loop->Advance(milliseconds(20));
  EXPECT_EQ(refused, 1002);
  EXPECT_EQ(next, kGood);
}

TEST(SharedLineTest, PortOpenedAgainInsideTheLeaveOfTheOneBeforeIsTheOneThatStands) {
  KLineBench bench;
  EXPECT_EQ(bench.Send("2101"), kGood);
  bench.loop->At(milliseconds(20), [&] { tests::Await(bench.session->SetPort(KLineBench::kPort)); });
  tests::Await(bench.session->SetPort(KLineBench::kPort));
  bench.loop->Advance(milliseconds(20));
  EXPECT_EQ(bench.Send("2101"), kGood);
  EXPECT_EQ(bench.TesterSaid(),
            FromTester("81") + FromTester("2101") + FromTester("82") + FromTester("81") + FromTester("2101"));
}

TEST(SharedLineTest, SessionMayGoInsideItsOwnLeave) {
  KLineBench bench;
  EXPECT_EQ(bench.Send("2101"), kGood);
  viator3::Session& session = *bench.session;
  bench.loop->At(milliseconds(20), [&] { bench.session.reset(); });
  tests::Await(session.Close());
  EXPECT_TRUE(bench.line->open);
  bench.loop->Advance(milliseconds(20));
  bench.AwaitLeave();
  EXPECT_FALSE(bench.line->open);
}

TEST(SharedLineTest, SessionClosedInsideTheLeaveOfItsFormerPortStaysClosed) {
  KLineBench bench;
  EXPECT_EQ(bench.Send("2101"), kGood);
  bench.loop->At(milliseconds(20), [&] { bench.CloseSession(); });
  tests::Await(bench.session->SetPort(KLineBench::kPort));
  bench.loop->Advance(milliseconds(20));
  EXPECT_FALSE(bench.line->open);
  EXPECT_EQ(bench.NumberOf("2101"), "1000");
}

}  // namespace
}  // namespace korval::ecu
