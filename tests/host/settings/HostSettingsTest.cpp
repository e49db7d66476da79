// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "host/settings/HostSettings.h"
#include "tests/support/MemorySettings.h"

namespace korval::host {
namespace {

TEST(HostSettings, GivesTheStoredValue) {
  tests::MemorySettings store;
  store.user["QOR/General/CommPort"] = "COM3";
  EXPECT_EQ(HostSettings(store).RegGetValue("General", "CommPort", "SIM"), "COM3");
}

TEST(HostSettings, GivesTheDefaultForAnAbsentValue) {
  tests::MemorySettings store;
  store.user["KorvalAsapServer/General/CommPort"] = "of another application";
  EXPECT_EQ(HostSettings(store).RegGetValue("General", "CommPort", "SIM"), "SIM");
}

TEST(HostSettings, GivesTheDefaultForAValueThatExistsButIsEmpty) {
  tests::MemorySettings store;
  store.user["QOR/Hardware/InstanceName"] = "";
  EXPECT_EQ(HostSettings(store).RegGetValue("Hardware", "InstanceName", "none"), "none");
}

TEST(HostSettings, StoresUnderSectionAndKey) {
  tests::MemorySettings store;
  HostSettings(store).RegSetValue("Hardware", "InstanceName", "12345");
  EXPECT_EQ(store.user.at("QOR/Hardware/InstanceName"), "12345");
}

TEST(HostSettings, SwallowsAWriteThatFails) {
  tests::MemorySettings store;
  store.refused = {"QOR/Hardware/InstanceName"};
  EXPECT_NO_THROW(HostSettings(store).RegSetValue("Hardware", "InstanceName", "12345"));
  EXPECT_TRUE(store.user.empty());
}

}  // namespace
}  // namespace korval::host
