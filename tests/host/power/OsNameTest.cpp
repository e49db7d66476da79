// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "host/power/OsName.h"

namespace korval::host {
namespace {

constexpr std::int32_t kWin32s = 0;
constexpr std::int32_t k9x = 1;
constexpr std::int32_t kNt = 2;

TEST(OsName, KnowsEverySystemOfTheVocabulary) {
  EXPECT_EQ(GetOsVersion({3, 10, kWin32s}), (OsName{"Win32s", "32s"}));
  EXPECT_EQ(GetOsVersion({3, 0, kNt}), (OsName{"Windows NT", "NT3"}));
  EXPECT_EQ(GetOsVersion({3, 10, kNt}), (OsName{"Windows NT", "NT3.1"}));
  EXPECT_EQ(GetOsVersion({3, 50, kNt}), (OsName{"Windows NT", "NT3.5"}));
  EXPECT_EQ(GetOsVersion({3, 51, kNt}), (OsName{"Windows NT", "NT3.51"}));
  EXPECT_EQ(GetOsVersion({4, 0, kNt}), (OsName{"Windows NT", "NT 4"}));
  EXPECT_EQ(GetOsVersion({5, 0, kNt}), (OsName{"Windows 2000", "Win2000"}));
  EXPECT_EQ(GetOsVersion({5, 1, kNt}), (OsName{"Windows XP", "WinXP"}));
  EXPECT_EQ(GetOsVersion({4, 0, k9x}), (OsName{"Windows 95", "95"}));
  EXPECT_EQ(GetOsVersion({4, 10, k9x}), (OsName{"Windows 98", "98"}));
  EXPECT_EQ(GetOsVersion({4, 90, k9x}), (OsName{"Windows ME", "ME"}));
}

TEST(OsName, IsEmptyForSystemsThatCameLater) {
  EXPECT_EQ(GetOsVersion({10, 0, kNt}), OsName{});
  EXPECT_EQ(GetOsVersion({5, 2, kNt}), OsName{});
  EXPECT_EQ(GetOsVersion({5, 0, k9x}), OsName{});
  EXPECT_EQ(GetOsVersion(OsVersion{}), OsName{});
}

}  // namespace
}  // namespace korval::host
