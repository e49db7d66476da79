// SPDX-License-Identifier: MIT
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "ecu/can/SharedCanBus.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::ecu {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Error = CanBus::Error;

const CanFrame kFrame({0x123, false}, {});

/// An adapter that says what the test says.
class ScriptedBus : public CanBus {
 public:
  struct Adapter {
    ScriptedBus* bus = nullptr;  ///< the one that was opened last
    int opened = 0;
    bool plugged = true;
    bool ready = true;
    bool full = false;
  };

  explicit ScriptedBus(Adapter& adapter) : adapter_(adapter) {
    adapter_.bus = this;
    ++adapter_.opened;
  }
  void SetEvents(Events given) override { events = std::move(given); }
  void Send(const CanFrame& /*frame*/) override {
    if (adapter_.full) events.on_error(Error::kQueueFull, "full");
  }
  bool IsReady() const override { return adapter_.ready; }

  Events events;

 private:
  Adapter& adapter_;
};

/// A user of the bus, and what it heard: "frame", "sent", "ready", or the text of a trouble.
struct User {
  User() {
    SharedCanBus::Listener heard_by;
    heard_by.on_frame = [this](const CanFrame&) { heard.emplace_back("frame"); };
    heard_by.on_sent = [this] { heard.emplace_back("sent"); };
    heard_by.on_trouble = [this](const SharedCanBus::Trouble& trouble) { heard.push_back(trouble.text); };
    heard_by.on_ready = [this] { heard.emplace_back("ready"); };
    listener = std::make_shared<const SharedCanBus::Listener>(std::move(heard_by));
  }

  std::vector<std::string> heard;
  std::shared_ptr<const SharedCanBus::Listener> listener;
};

class SharedCanBusTest : public testing::Test {
 protected:
  SharedCanBusTest() {
    bus.Listen(one.listener);
    bus.Listen(other.listener);
  }
  std::unique_ptr<CanBus> Open() {
    if (!adapter.plugged) throw base::Failure("not plugged in");
    return std::make_unique<ScriptedBus>(adapter);
  }
  const CanBus::Events& Events() const { return adapter.bus->events; }
  void Advance() { loop->Advance(SharedCanBus::kReopenInterval); }

  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  ScriptedBus::Adapter adapter;
  SharedCanBus bus{loop, [this] { return Open(); }};
  User one;
  User other;
};

TEST_F(SharedCanBusTest, SentIsSaidToWhoeverSentAndOnlyWhenAllIs) {
  bus.Send(kFrame, one.listener);
  bus.Send(kFrame, other.listener);
  bus.Send(kFrame, one.listener);
  Events().on_sent();
  EXPECT_THAT(one.heard, IsEmpty()) << "one more is under way";
  Events().on_sent();
  EXPECT_THAT(other.heard, ElementsAre("sent"));
  Events().on_sent();
  EXPECT_THAT(one.heard, ElementsAre("sent"));
  EXPECT_THAT(other.heard, ElementsAre("sent"));
}

TEST_F(SharedCanBusTest, OthersWhoKeepSendingDoNotHoldUpAConfirmation) {
  bus.Send(kFrame, one.listener);
  for (int i = 0; i < 100; ++i) {
    bus.Send(kFrame, other.listener);
    Events().on_sent();
  }
  EXPECT_THAT(one.heard, ElementsAre("sent"));
  EXPECT_THAT(other.heard, IsEmpty());
}

TEST_F(SharedCanBusTest, FullQueueIsTheTroubleOfWhoeverSentTheDroppedFrame) {
  bus.Send(kFrame, one.listener);
  adapter.full = true;
  bus.Send(kFrame, other.listener);
  EXPECT_THAT(other.heard, ElementsAre("full"));
  EXPECT_THAT(one.heard, IsEmpty());
  Events().on_sent();
  EXPECT_THAT(one.heard, ElementsAre("sent"));
}

TEST_F(SharedCanBusTest, SendersThatAreGoneAreNotTold) {
  bus.Send(kFrame, nullptr);
  bus.Send(kFrame, User().listener);
  Events().on_sent();
  Events().on_sent();
  Events().on_sent();
  EXPECT_THAT(one.heard, IsEmpty());
}

TEST_F(SharedCanBusTest, FrameLeftOverFromAnUnpluggedAdapterDoesNotStopItsReopening) {
  Events().on_error(Error::kUnplugged, "unplugged");
  Events().on_frame(kFrame);
  Events().on_sent();
  Events().on_recovered();
  EXPECT_TRUE(bus.Loss());
  Advance();
  EXPECT_EQ(adapter.opened, 2);
  EXPECT_FALSE(bus.Loss());
  EXPECT_TRUE(bus.IsReady());
}

TEST_F(SharedCanBusTest, FramesOfALostBusAreNotWaitedFor) {
  bus.Send(kFrame, one.listener);
  Events().on_error(Error::kUnplugged, "unplugged");
  Advance();
  bus.Send(kFrame, one.listener);
  Events().on_sent();
  EXPECT_THAT(one.heard, ElementsAre("unplugged", "ready", "sent"));
}

TEST_F(SharedCanBusTest, BusThatWasOpenedAnewIsNotOpenedOnceMore) {
  Events().on_error(Error::kUnplugged, "unplugged");
  bus.Reopen([this] { return Open(); });
  EXPECT_EQ(adapter.opened, 2);
  loop->Advance(std::chrono::hours(1));
  EXPECT_EQ(adapter.opened, 2);
}

TEST_F(SharedCanBusTest, BusThatIsStillOffWhenItIsOpenedAnewStaysLost) {
  Events().on_error(Error::kBusOff, "bus off");
  adapter.ready = false;
  Advance();
  EXPECT_EQ(adapter.opened, 2);
  ASSERT_TRUE(bus.Loss());
  EXPECT_EQ(bus.Loss()->error, Error::kBusOff);
  Events().on_error(Error::kBusOff, "bus off");
  Advance();
  EXPECT_EQ(adapter.opened, 3);
  EXPECT_TRUE(bus.Loss());
  adapter.ready = true;
  Events().on_recovered();
  EXPECT_FALSE(bus.Loss());
  EXPECT_EQ(one.heard.back(), "ready");
}

TEST_F(SharedCanBusTest, AdapterThatConnectsAgainAndAgainInVainStaysLost) {
  Events().on_error(Error::kUnplugged, "unplugged");
  adapter.ready = false;
  for (int attempt = 0; attempt < 3; ++attempt) {
    Advance();
    EXPECT_TRUE(bus.Loss());
    Events().on_error(Error::kUnplugged, "does not connect");
  }
  Advance();
  Events().on_recovered();
  EXPECT_FALSE(bus.Loss());
  adapter.plugged = false;
  Events().on_error(Error::kUnplugged, "unplugged");
  Advance();
  EXPECT_EQ(bus.Loss()->text, "not plugged in");
}

}  // namespace
}  // namespace korval::ecu
