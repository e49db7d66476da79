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
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Error = CanBus::Error;

constexpr std::size_t kEnough = 1000000;
const CanFrame kFrame({0x123, false}, {});

/// An adapter that says what the test says.
class ScriptedBus : public CanBus {
 public:
  struct Adapter {
    ScriptedBus* bus = nullptr;  ///< the one that was opened last
    int opened = 0;
    bool plugged = true;
    bool ready = true;
    std::size_t room = kEnough;
    bool confirms = false;  ///< from inside
    std::vector<std::uint32_t> taken;
  };

  explicit ScriptedBus(Adapter& adapter) : adapter_(adapter) {
    adapter_.bus = this;
    ++adapter_.opened;
  }
  void SetEvents(Events given) override { events = std::move(given); }
  bool Send(const CanFrame& frame) override {
    if (adapter_.room == 0) return false;
    --adapter_.room;
    adapter_.taken.push_back(frame.identifier.number);
    if (adapter_.confirms) events.on_sent();
    return true;
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

TEST_F(SharedCanBusTest, FrameThatTheAdapterDropsIsTheTroubleOfWhoeverSentIt) {
  bus.Send(kFrame, one.listener);
  bus.Send(kFrame, other.listener);
  Events().on_error(Error::kQueueFull, "dropped");
  EXPECT_THAT(other.heard, ElementsAre("dropped"));
  EXPECT_THAT(one.heard, IsEmpty());
  Events().on_sent();
  EXPECT_THAT(one.heard, ElementsAre("sent"));
}

TEST_F(SharedCanBusTest, FramesThatFindNoRoomAreTriedAgainInTheirOrder) {
  adapter.room = 0;
  bus.Send(CanFrame({1, false}, {}), one.listener);
  bus.Send(CanFrame({2, false}, {}), other.listener);
  adapter.room = kEnough;
  bus.Send(CanFrame({3, false}, {}), one.listener);
  EXPECT_THAT(adapter.taken, IsEmpty()) << "nobody is overtaken";
  EXPECT_TRUE(bus.IsWaiting(one.listener));
  loop->Advance(SharedCanBus::kRetryInterval);
  EXPECT_THAT(adapter.taken, ElementsAre(1, 2, 3));
  EXPECT_FALSE(bus.IsWaiting(one.listener));
  for (int i = 0; i < 3; ++i) Events().on_sent();
  EXPECT_THAT(one.heard, ElementsAre("sent")) << "once, when all of its frames are";
  EXPECT_THAT(other.heard, ElementsAre("sent"));
  EXPECT_EQ(loop->PendingEvents(), 0U) << "nothing is tried any more";
}

TEST_F(SharedCanBusTest, SentIsSaidWhenAFrameThatWaitedIsTakenAndNotBefore) {
  adapter.confirms = true;
  adapter.room = 0;
  bus.Send(kFrame, one.listener);
  loop->Advance(SharedCanBus::kPatience - SharedCanBus::kRetryInterval);
  EXPECT_THAT(one.heard, IsEmpty());
  adapter.room = kEnough;
  loop->Advance(SharedCanBus::kRetryInterval);
  EXPECT_THAT(one.heard, ElementsAre("sent"));
}

TEST_F(SharedCanBusTest, QueueThatStaysFullIsSaidToEachSenderAfterItsPatience) {
  adapter.room = 0;
  bus.Send(kFrame, one.listener);
  bus.Send(kFrame, other.listener);
  loop->Advance(SharedCanBus::kPatience - SharedCanBus::kRetryInterval);
  EXPECT_THAT(one.heard, IsEmpty());
  loop->Advance(SharedCanBus::kRetryInterval);
  EXPECT_THAT(one.heard, ElementsAre(HasSubstr("no frame was taken for 1000 ms (N_As): the transmit queue of "
                                               "the CAN interface stayed full")));
  EXPECT_THAT(other.heard, SizeIs(1));
  adapter.room = kEnough;
  bus.Send(kFrame, one.listener);
  EXPECT_THAT(adapter.taken, SizeIs(1)) << "what was given up does not go out";
}

TEST_F(SharedCanBusTest, PatienceCountsFromTheLastFrameThatWasTaken) {
  adapter.room = 0;
  for (int i = 0; i < 4; ++i) bus.Send(kFrame, one.listener);
  for (int i = 0; i < 3; ++i) {
    loop->Advance(SharedCanBus::kPatience - SharedCanBus::kRetryInterval);
    adapter.room = 1;
    loop->Advance(SharedCanBus::kRetryInterval);
  }
  EXPECT_THAT(one.heard, IsEmpty());
  EXPECT_THAT(adapter.taken, SizeIs(3));
  loop->Advance(SharedCanBus::kPatience);
  EXPECT_THAT(one.heard, SizeIs(1));
}

TEST_F(SharedCanBusTest, WithdrawnFramesAreNotSent) {
  adapter.room = 0;
  bus.Send(CanFrame({1, false}, {}), one.listener);
  bus.Send(CanFrame({2, false}, {}), other.listener);
  EXPECT_TRUE(bus.Withdraw(one.listener));
  EXPECT_FALSE(bus.Withdraw(one.listener));
  adapter.room = kEnough;
  loop->Advance(SharedCanBus::kRetryInterval);
  EXPECT_THAT(adapter.taken, ElementsAre(2));
}

TEST_F(SharedCanBusTest, NoMoreFramesWaitThanTheLimit) {
  adapter.room = 0;
  for (std::size_t i = 0; i < SharedCanBus::kMostWaiting; ++i) bus.Send(kFrame, one.listener);
  EXPECT_THAT(one.heard, IsEmpty());
  bus.Send(kFrame, other.listener);
  EXPECT_THAT(other.heard, ElementsAre(HasSubstr("8192 frames wait already")));
}

TEST_F(SharedCanBusTest, FramesWaitForAnAdapterThatConnectsForAsLongAsItTakes) {
  adapter.ready = false;
  adapter.room = 0;
  bus.Reopen([this] { return Open(); });
  bus.Send(kFrame, one.listener);
  loop->Advance(10 * SharedCanBus::kPatience);
  EXPECT_TRUE(bus.IsWaiting(one.listener));
  adapter.room = kEnough;
  Events().on_recovered();
  loop->Advance(SharedCanBus::kRetryInterval);
  EXPECT_THAT(adapter.taken, SizeIs(1));
}

TEST_F(SharedCanBusTest, FramesThatWaitAreLostWithTheirBus) {
  adapter.room = 0;
  bus.Send(kFrame, one.listener);
  Events().on_error(Error::kUnplugged, "unplugged");
  EXPECT_FALSE(bus.IsWaiting(one.listener));
  adapter.room = kEnough;
  Advance();
  EXPECT_THAT(adapter.taken, IsEmpty());
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
