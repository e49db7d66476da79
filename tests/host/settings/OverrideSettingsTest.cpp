// SPDX-License-Identifier: MIT
#include <memory>

#include <gtest/gtest.h>

#include "host/settings/OverrideSettings.h"
#include "tests/support/MemorySettings.h"

namespace korval::host {
namespace {

class OverrideSettingsTest : public testing::Test {
 protected:
  std::shared_ptr<tests::MemorySettings> store_ = std::make_shared<tests::MemorySettings>();
  OverrideSettings settings_{store_, {{"QOR/General/CommPort", "SIM"}}};
};

TEST_F(OverrideSettingsTest, ReadsTheOverrideFirst) {
  store_->user["QOR/General/CommPort"] = "COM3";
  EXPECT_EQ(settings_.Read("QOR/General/CommPort"), "SIM");
  EXPECT_EQ(store_->user.at("QOR/General/CommPort"), "COM3");
}

TEST_F(OverrideSettingsTest, ReadsEverythingElseFromTheStore) {
  store_->user["QOR/General/ServerName"] = "server7";
  store_->machine["QOR/General/CommPort"] = "of the machine";
  EXPECT_EQ(settings_.Read("QOR/General/ServerName"), "server7");
  EXPECT_EQ(settings_.Read("QOR/Hardware/InstanceName"), std::nullopt);
  EXPECT_EQ(settings_.ReadMachineWide("QOR/General/CommPort"), "of the machine");
}

TEST_F(OverrideSettingsTest, KeepsAnOverrideThatIsSavedUnchangedOutOfTheStore) {
  settings_.Write("QOR/General/CommPort", "SIM");
  EXPECT_TRUE(store_->user.empty());
  EXPECT_EQ(settings_.Read("QOR/General/CommPort"), "SIM");
}

TEST_F(OverrideSettingsTest, EndsAnOverrideWhenAnotherValueIsSaved) {
  settings_.Write("QOR/General/CommPort", "COM4");
  EXPECT_EQ(store_->user.at("QOR/General/CommPort"), "COM4");
  EXPECT_EQ(settings_.Read("QOR/General/CommPort"), "COM4");
}

TEST_F(OverrideSettingsTest, AValueThatCannotBeSavedLeavesTheOverride) {
  store_->read_only = true;
  EXPECT_THROW(settings_.Write("QOR/General/CommPort", "COM4"), base::Failure);
  EXPECT_EQ(settings_.Read("QOR/General/CommPort"), "SIM");
}

}  // namespace
}  // namespace korval::host
