// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/RealTime.h"
#include "platform/RealTimeKLineWire.h"

namespace korval::platform {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

int Policy() { return ::sched_getscheduler(0) & ~SCHED_RESET_ON_FORK; }

// Whether this computer gives it to us.
bool IsAllowed() {
  bool allowed = false;
  std::thread([&] {
    sched_param parameters{};
    parameters.sched_priority = 10;
    allowed = ::sched_setscheduler(0, SCHED_RR, &parameters) == 0;
  }).join();
  return allowed;
}

/// Takes from the calling thread what real-time scheduling needs. The limit is the process's, and is put
/// back.
class NoRight {
 public:
  NoRight() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> sets{};
    ::syscall(SYS_capget, &header, sets.data());
    sets[0].effective &= ~(1U << CAP_SYS_NICE);
    ::syscall(SYS_capset, &header, sets.data());
    ::getrlimit(RLIMIT_RTPRIO, &limit_);
    const rlimit none{0, limit_.rlim_max};
    ::setrlimit(RLIMIT_RTPRIO, &none);
  }
  ~NoRight() { ::setrlimit(RLIMIT_RTPRIO, &limit_); }
  NoRight(const NoRight&) = delete;
  NoRight& operator=(const NoRight&) = delete;

 private:
  rlimit limit_{};
};

struct Wire : ecu::KLineWire {
  explicit Wire(Events& taken) : events(taken) {}
  void SetEvents(Events taken) override { events = std::move(taken); }
  void Open(std::int32_t) override {}
  bool SetBreak(bool) override { return true; }
  bool SetModemLines(std::optional<bool>, std::optional<bool>) override { return true; }
  void Write(base::ByteView) override {}
  void Close() override {}
  Events& events;
};

class RealTimeTest : public ::testing::Test {
 protected:
  std::vector<std::string> said;
  std::shared_ptr<RealTime> real_time =
      std::make_shared<RealTime>([this](const std::string& text) { said.push_back(text); });
};

TEST_F(RealTimeTest, LastsUntilTheLastTokenIsGone) {
  if (!IsAllowed()) GTEST_SKIP() << "this computer refuses real-time scheduling";
  auto one = real_time->Hold();
  auto other = real_time->Hold();
  EXPECT_EQ(Policy(), SCHED_RR);
  one.reset();
  EXPECT_EQ(Policy(), SCHED_RR);
  other.reset();
  EXPECT_EQ(Policy(), SCHED_OTHER);
  EXPECT_THAT(said, IsEmpty());
}

TEST_F(RealTimeTest, IsNotHandedOnToThreads) {
  if (!IsAllowed()) GTEST_SKIP() << "this computer refuses real-time scheduling";
  const auto held = real_time->Hold();
  int policy = -1;
  std::thread([&] { policy = Policy(); }).join();
  EXPECT_EQ(policy, SCHED_OTHER);
}

TEST_F(RealTimeTest, RefusalIsSaidOnceWithWhatToDo) {
  std::thread([&] {
    const NoRight no_right;
    EXPECT_FALSE(real_time->Hold());
    EXPECT_FALSE(real_time->Hold());
    EXPECT_EQ(Policy(), SCHED_OTHER);
  }).join();
  EXPECT_THAT(said, ElementsAre(AllOf(HasSubstr("Real-time scheduling is refused (Operation not permitted)"),
                                      HasSubstr("rtprio 10"), HasSubstr("cap_sys_nice"))));
}

TEST_F(RealTimeTest, AKLineHasItWhileItIsOpen) {
  if (!IsAllowed()) GTEST_SKIP() << "this computer refuses real-time scheduling";
  ecu::KLineWire::Events events;
  RealTimeKLineWire wire(std::make_unique<Wire>(events), real_time);
  int lost = 0;
  wire.SetEvents({[](base::ByteView) {}, [&](const std::string&) { ++lost; }});
  EXPECT_EQ(Policy(), SCHED_OTHER);
  wire.Open(10400);
  wire.Open(9600);
  EXPECT_EQ(Policy(), SCHED_RR);
  events.on_lost("pulled out");
  EXPECT_EQ(lost, 1);
  EXPECT_EQ(Policy(), SCHED_OTHER);
  wire.Open(10400);
  EXPECT_EQ(Policy(), SCHED_RR);
  wire.Close();
  EXPECT_EQ(Policy(), SCHED_OTHER);
}

}  // namespace
}  // namespace korval::platform
