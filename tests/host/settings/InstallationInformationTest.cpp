// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "host/settings/InstallationInformation.h"
#include "tests/support/MemorySettings.h"

namespace korval::host {
namespace {

TEST(InstallationInformation, TakesFolderAndVersionOfALocalInstallation) {
  tests::MemorySettings store;
  store.machine = {{"QOR/DoNotUseWeb", "1"}, {"QOR/InstallFolder", "/opt/qor"}, {"QOR/Version", "4.2"}};
  store.user["QOR/General/ServerName"] = "not looked at";
  EXPECT_EQ(ReadInstallationInformation(store), (InstallationInformation{"/opt/qor", true, "4.2"}));
}

TEST(InstallationInformation, LeavesEmptyWhatALocalInstallationDoesNotRecord) {
  tests::MemorySettings store;
  store.machine["QOR/DoNotUseWeb"] = "1";
  EXPECT_EQ(ReadInstallationInformation(store, {"old", false, "old"}),
            (InstallationInformation{"", true, ""}));
}

TEST(InstallationInformation, TakesTheServersNameOtherwise) {
  tests::MemorySettings store;
  store.machine = {{"QOR/InstallFolder", "not looked at"}, {"QOR/Version", "not looked at"}};
  store.user["QOR/General/ServerName"] = "server7";
  EXPECT_EQ(ReadInstallationInformation(store), (InstallationInformation{"server7", false, ""}));
}

TEST(InstallationInformation, TakesOneWithABlankForNotLocal) {
  tests::MemorySettings store;
  store.machine = {{"QOR/DoNotUseWeb", "1 "}, {"QOR/InstallFolder", "/opt/qor"}};
  EXPECT_EQ(ReadInstallationInformation(store), InstallationInformation{});
}

TEST(InstallationInformation, KeepsTheVersionOfAnInstallationThatIsNoLongerLocal) {
  tests::MemorySettings store;
  EXPECT_EQ(ReadInstallationInformation(store, {"/opt/qor", true, "4.2"}),
            (InstallationInformation{"", false, "4.2"}));
}

}  // namespace
}  // namespace korval::host
