// SPDX-License-Identifier: MIT
// What happens to a wait whose session is closed or destroyed by an event inside it. Under the address
// sanitizer these show that everything the wait stands on stays alive.
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "tests/ecu/session/SessionBench.h"
#include "tests/support/Await.h"

namespace korval::ecu {
namespace {

using std::chrono::milliseconds;

constexpr char kSlow[] = "LatencyMs='1000'>";
constexpr char kFunction[] = "Name='ENGINE' Session='81'";

struct Wait {
  std::string what;
  /// Takes what it waits on out of the bench, so that nothing but the wait holds it.
  std::function<std::function<void()>(SessionBench&)> begin;
};

void PrintTo(const Wait& wait, std::ostream* out) { *out << wait.what; }

class AbortTest : public testing::TestWithParam<Wait> {
 protected:
  SessionBench bench{kSlow, kFunction};
};

TEST_P(AbortTest, ClosedSessionEndsItWith1000) {
  const auto wait = GetParam().begin(bench);
  bench.loop->At(milliseconds(10), [this] { tests::Await(bench.session->Close()); });
  EXPECT_EQ(NumberOf(wait), kLinkLost);
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(10)));
}

TEST_P(AbortTest, SecondStepIsEndedToo) {
  const auto wait = GetParam().begin(bench);
  bench.loop->At(milliseconds(999), [this] { tests::Await(bench.session->Close()); });
  EXPECT_EQ(NumberOf(wait), kLinkLost);
}

TEST_P(AbortTest, DestroyedSessionEndsItWith1000) {
  const auto wait = GetParam().begin(bench);
  bench.loop->At(milliseconds(10), [this] { bench.session.reset(); });
  EXPECT_EQ(NumberOf(wait), kLinkLost);
  EXPECT_EQ(bench.loop->PendingEvents(), 0U);
}

TEST_P(AbortTest, ReleasedPortEndsItWith1000) {
  const auto wait = GetParam().begin(bench);
  bench.loop->At(milliseconds(10), [this] { tests::Await(bench.session->SetPort("")); });
  EXPECT_EQ(NumberOf(wait), kLinkLost);
}

TEST_P(AbortTest, PortOpenedAnewEndsItWith1000AndServesTheNextRequest) {
  const auto wait = GetParam().begin(bench);
  bench.loop->At(milliseconds(10), [this] {
    tests::Await(bench.session->Close());
    tests::Await(bench.session->SetPort("SIM"));
  });
  EXPECT_EQ(NumberOf(wait), kLinkLost);
  EXPECT_EQ(NumberOf([this] { tests::Await(bench.Request("READ")->Execute()); }), 0);
}

TEST_P(AbortTest, FileOfferedAnewDoesNotDisturbIt) {
  const auto wait = GetParam().begin(bench);
  bench.loop->At(milliseconds(10), [this] {
    bench.Offer("other.xml", SessionBench::FileText(kFunction, kSlow));
    bench.Engine();
  });
  EXPECT_EQ(NumberOf(wait), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Waits, AbortTest,
    testing::Values(Wait{"Initialise",
                         [](SessionBench& bench) {
                           return [ecu = bench.Engine()] { tests::Await(ecu->Initialise()); };
                         }},
                    Wait{"Reinitialise",
                         [](SessionBench& bench) {
                           return [ecu = bench.Engine()] { tests::Await(ecu->Reinitialise()); };
                         }},
                    Wait{"Send",
                         [](SessionBench& bench) {
                           return [ecu = bench.Engine()] {
                             base::ByteBuffer answer;
                             tests::Await(ecu->Send(base::ByteBuffer{0x21, 0x01}, answer));
                           };
                         }},
                    Wait{"Execute",
                         [](SessionBench& bench) {
                           return [request = bench.Request("READ")] { tests::Await(request->Execute()); };
                         }},
                    Wait{"Get by name",
                         [](SessionBench& bench) {
                           auto object = bench.session->CreateInstance("qor4inst.ENGINE");
                           object->SetProtocol(bench.Engine());
                           return [object = std::move(object)] { tests::Await(object->Get("Speed")); };
                         }},
                    Wait{"Set by name", [](SessionBench& bench) {
                           auto object = bench.session->CreateInstance("qor4inst.ENGINE");
                           object->SetProtocol(bench.Engine());
                           return [object = std::move(object)] { tests::Await(object->Set("Limit", 100)); };
                         }}));

TEST(AbortWithoutOwnersTest, NothingButTheWaitHoldsWhatItStandsOn) {
  SessionBench bench(kSlow, kFunction);
  std::shared_ptr<viator3::Request> request = bench.Request("READ");
  viator3::Request& raw = *request;
  bench.loop->At(milliseconds(10), [&] {
    request.reset();
    bench.session.reset();
  });
  EXPECT_EQ(NumberOf([&] { tests::Await(raw.Execute()); }), kLinkLost);

  SessionBench other(kSlow, kFunction);
  std::shared_ptr<viator3::Ecu> ecu = other.Engine();
  viator3::Ecu& raw_ecu = *ecu;
  other.loop->At(milliseconds(10), [&] {
    ecu.reset();
    other.session.reset();
  });
  base::ByteBuffer answer;
  EXPECT_EQ(NumberOf([&] { tests::Await(raw_ecu.Send(base::ByteBuffer{0x21, 0x01}, answer)); }), kLinkLost);
}

TEST(AbortNestedTest, WaitInsideAWaitEndsWithItsSession) {
  SessionBench bench(kSlow, kFunction);
  std::int32_t inner = 0;
  bench.loop->At(milliseconds(5), [&] {
    const auto request = bench.Request("READ_LIMIT");
    inner = NumberOf([&] { tests::Await(request->Execute()); });
  });
  bench.loop->At(milliseconds(10), [&] { bench.session.reset(); });
  const auto request = bench.Request("READ");
  EXPECT_EQ(NumberOf([&] { tests::Await(request->Execute()); }), kLinkLost);
  EXPECT_EQ(inner, kLinkLost);
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(10)));
}

}  // namespace
}  // namespace korval::ecu
