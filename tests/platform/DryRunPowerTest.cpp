// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/DryRunPower.h"

namespace korval::platform {
namespace {

using host::PowerPlatform;
using testing::ElementsAre;

TEST(DryRunPower, TellsWhatWouldBeDone) {
  std::vector<std::string> traces;
  DryRunPower power([&](const std::string& text) { traces.push_back(text); });
  power.ExitWindows(PowerPlatform::kReboot | PowerPlatform::kForce, 0xFFFFFFFF);
  power.ExitWindows(PowerPlatform::kShutdown | PowerPlatform::kForce, 0xFFFFFFFF);
  EXPECT_THAT(traces, ElementsAre("dry run: the computer would now restart",
                                  "dry run: the computer would now shut down"));
}

TEST(DryRunPower, NeedsNoPrivilege) {
  DryRunPower power([](const std::string&) { FAIL() << "nothing is done yet"; });
  host::OsVersion version;
  EXPECT_FALSE(power.GetVersion(version));
  EXPECT_EQ(power.AdjustTokenPrivileges(), 0U);
}

}  // namespace
}  // namespace korval::platform
