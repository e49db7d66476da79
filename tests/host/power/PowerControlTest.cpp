// SPDX-License-Identifier: MIT
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "host/power/PowerControl.h"

namespace korval::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecordingPlatform : public PowerPlatform {
 public:
  OsVersion version;
  bool tells_version = true;
  /// Last-error numbers by operation; 0 for those that are missing.
  std::map<std::string, std::uint32_t> errors;
  std::string refusal;
  std::vector<std::string> calls;

  bool GetVersion(OsVersion& result) override {
    result = version;
    return tells_version;
  }
  std::uint32_t GetCurrentProcess() override { return Record("GetCurrentProcess", ""); }
  std::uint32_t OpenProcessToken(std::uint32_t access) override {
    return Record("OpenProcessToken", " " + std::to_string(access));
  }
  std::uint32_t LookupPrivilegeValue(const std::string& privilege) override {
    return Record("LookupPrivilegeValue", " " + privilege);
  }
  std::uint32_t AdjustTokenPrivileges() override { return Record("AdjustTokenPrivileges", ""); }
  void ExitWindows(std::uint32_t flags, std::uint32_t reserved) override {
    Record("ExitWindows", " " + std::to_string(flags) + " " + std::to_string(reserved));
    if (!refusal.empty()) throw base::Failure(refusal);
  }

 private:
  std::uint32_t Record(const std::string& operation, const std::string& arguments) {
    calls.push_back(operation + arguments);
    return errors[operation];
  }
};

class RecordingMessageBox : public MessageBox {
 public:
  std::vector<std::string> texts;

  void Show(const std::string& text, MessageStyle style) override {
    EXPECT_EQ(style, MessageStyle::kPlain);
    texts.push_back(text);
  }
};

class PowerControlTest : public testing::Test {
 protected:
  RecordingPlatform platform_;
  RecordingMessageBox box_;
  PowerControl power_{platform_, box_};
};

TEST_F(PowerControlTest, ShutdownForcesApplicationsToClose) {
  power_.PcShutdown();
  EXPECT_THAT(platform_.calls, ElementsAre("ExitWindows 5 4294967295"));
  EXPECT_THAT(box_.texts, IsEmpty());
}

TEST_F(PowerControlTest, RebootForcesApplicationsToClose) {
  power_.PcReboot();
  EXPECT_THAT(platform_.calls, ElementsAre("ExitWindows 6 4294967295"));
  EXPECT_THAT(box_.texts, IsEmpty());
}

TEST_F(PowerControlTest, EnablesThePrivilegeOnVersions50And51OfTheNtFamily) {
  for (const std::int32_t minor : {0, 1}) {
    platform_.calls.clear();
    platform_.version = {5, minor, 2};
    power_.PcReboot();
    EXPECT_THAT(platform_.calls, ElementsAre("GetCurrentProcess", "OpenProcessToken 40",
                                             "LookupPrivilegeValue SeShutdownPrivilege",
                                             "AdjustTokenPrivileges", "ExitWindows 6 4294967295"));
  }
}

TEST_F(PowerControlTest, TouchesNoPrivilegeOnAnyOtherSystem) {
  for (const OsVersion& version :
       {OsVersion{4, 0, 2}, OsVersion{5, 2, 2}, OsVersion{6, 1, 2}, OsVersion{10, 0, 2}, OsVersion{5, 0, 1},
        OsVersion{5, 1, 0}, OsVersion{}}) {
    platform_.calls.clear();
    platform_.version = version;
    power_.PcShutdown();
    EXPECT_THAT(platform_.calls, ElementsAre("ExitWindows 5 4294967295"));
  }
}

TEST_F(PowerControlTest, TouchesNoPrivilegeWhenTheSystemDoesNotTellItsVersion) {
  platform_.version = {5, 1, 2};
  platform_.tells_version = false;
  EXPECT_FALSE(power_.IsWindowsXP());
  power_.PcShutdown();
  EXPECT_THAT(platform_.calls, ElementsAre("ExitWindows 5 4294967295"));
}

TEST_F(PowerControlTest, TellsTheTwoSystemsApart) {
  platform_.version = {5, 0, 2};
  EXPECT_TRUE(power_.IsWindows2000());
  EXPECT_FALSE(power_.IsWindowsXP());
  platform_.version = {5, 1, 2};
  EXPECT_FALSE(power_.IsWindows2000());
  EXPECT_TRUE(power_.IsWindowsXP());
}

TEST_F(PowerControlTest, ShutsDownThoughTheUserLacksThePrivilege) {
  platform_.version = {5, 1, 2};
  platform_.errors["AdjustTokenPrivileges"] = 1300;
  power_.PcShutdown();
  EXPECT_THAT(box_.texts, ElementsAre("AdjustTokenPrivileges error==1300"));
  EXPECT_EQ(platform_.calls.back(), "ExitWindows 5 4294967295");
}

TEST_F(PowerControlTest, RunsEveryPrivilegeStepAndShowsEveryError) {
  platform_.errors = {{"GetCurrentProcess", 1},
                      {"OpenProcessToken", 5},
                      {"LookupPrivilegeValue", 1313},
                      {"AdjustTokenPrivileges", 6}};
  power_.EnableShutdownPrivilege();
  EXPECT_EQ(platform_.calls.size(), 4U);
  EXPECT_THAT(box_.texts, ElementsAre("GetCurrentProcess error==1", "OpenProcessToken error==5",
                                      "LookupPrivilegeValue error==1313", "AdjustTokenPrivileges error==6"));
}

TEST_F(PowerControlTest, ShowsAnErrorAgainUntilAnotherOneReplacesIt) {
  platform_.errors["OpenProcessToken"] = 5;
  platform_.errors["AdjustTokenPrivileges"] = 6;
  power_.EnableShutdownPrivilege();
  EXPECT_THAT(box_.texts, ElementsAre("OpenProcessToken error==5", "LookupPrivilegeValue error==5",
                                      "AdjustTokenPrivileges error==6"));
}

TEST_F(PowerControlTest, ReportsAFailedShutdownOnce) {
  platform_.refusal = "refused";
  power_.PcShutdown();
  EXPECT_THAT(box_.texts, ElementsAre("PcShutdown error : refused"));
}

TEST_F(PowerControlTest, ReportsAFailedRebootUnderTheShutdownsName) {
  platform_.refusal = "refused";
  power_.PcReboot();
  EXPECT_THAT(box_.texts, ElementsAre("PcShutdown error : refused"));
}

}  // namespace
}  // namespace korval::host
