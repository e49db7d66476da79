// SPDX-License-Identifier: MIT
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/DevicePortScout.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::platform {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class DevicePortScoutTest : public ::testing::Test {
 protected:
  void Watch() {
    scout_.SetOnDevicesHaveChanged([this] { ++changes_; });
  }

  std::shared_ptr<tests::ManualEventLoop> loop_ = std::make_shared<tests::ManualEventLoop>();
  std::vector<PluggedInterface> plugged_{
      {"/dev/ttyUSB0", "adapter", "KD-1"}, {"/dev/ttyS0", "", ""}, {"CAN:socketcan:can0", "", "KD<2>"}};
  QStringList names_{"ttyUSB0", "ttyS0", "can0"};
  int scans_ = 0;
  int changes_ = 0;
  DevicePortScout scout_{loop_,
                         [this] {
                           ++scans_;
                           return plugged_;
                         },
                         [this] { return names_; }};
};

TEST_F(DevicePortScoutTest, ListsTheSerialNumbersInTheirOrder) {
  const std::string list = scout_.DeviceList();
  EXPECT_THAT(list, HasSubstr("<sn>KD-1</sn>"));
  EXPECT_LT(list.find("KD-1"), list.find("KD&lt;2&gt;"));
}

TEST_F(DevicePortScoutTest, LeavesOutWhatHasNoSerialNumber) {
  plugged_ = {{"/dev/ttyS0", "port", ""}};
  EXPECT_THAT(scout_.DeviceList(), Not(HasSubstr("<sn")));
}

TEST_F(DevicePortScoutTest, TellsOfAnInterfaceThatIsPluggedInAndOfOneThatIsPulled) {
  Watch();
  plugged_.push_back({"/dev/ttyUSB1", "", "KD-3"});
  names_.append("ttyUSB1");
  loop_->Advance(DevicePortScout::kInterval);
  EXPECT_EQ(changes_, 1);
  plugged_.clear();
  names_.clear();
  loop_->Advance(DevicePortScout::kInterval);
  EXPECT_EQ(changes_, 2);
}

TEST_F(DevicePortScoutTest, SaysNothingOfWhatHasNoSerialNumber) {
  Watch();
  plugged_.push_back({"/dev/ttyS1", "port", ""});
  names_.append("ttyS1");
  loop_->Advance(DevicePortScout::kInterval);
  EXPECT_EQ(changes_, 0);
}

TEST_F(DevicePortScoutTest, LooksCloserOnlyWhenTheNamesDiffer) {
  Watch();
  const int scans_at_start = scans_;
  for (int i = 0; i < 5; ++i) loop_->Advance(DevicePortScout::kInterval);
  EXPECT_EQ(scans_, scans_at_start);
}

TEST_F(DevicePortScoutTest, FindsASerialNumberThatComesAfterTheName) {
  Watch();
  names_.append("ttyUSB1");
  loop_->Advance(DevicePortScout::kInterval);
  EXPECT_EQ(changes_, 0);
  plugged_.push_back({"/dev/ttyUSB1", "", "KD-3"});
  loop_->Advance(DevicePortScout::kInterval);
  EXPECT_EQ(changes_, 1);
}

TEST_F(DevicePortScoutTest, LooksNoMoreAfterItsShutdown) {
  Watch();
  scout_.Shutdown();
  plugged_.clear();
  names_.clear();
  loop_->Advance(DevicePortScout::kInterval);
  EXPECT_EQ(changes_, 0);
}

TEST_F(DevicePortScoutTest, MayBeShutDownByWhomItTells) {
  scout_.SetOnDevicesHaveChanged([this] {
    ++changes_;
    scout_.Shutdown();
  });
  plugged_.clear();
  names_.clear();
  loop_->Advance(DevicePortScout::kInterval);
  plugged_ = {{"/dev/ttyUSB0", "", "KD-1"}};
  names_ = {"ttyUSB0"};
  loop_->Advance(DevicePortScout::kInterval);
  EXPECT_EQ(changes_, 1);
}

}  // namespace
}  // namespace korval::platform
