// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "apps/asap3/TroubleCodes.h"

namespace korval::apps {
namespace {

TEST(TroubleCodesTest, ACodeIsWrittenAsWorkshopsDo) {
  EXPECT_EQ(CodeText(0x0000), "P0000");
  EXPECT_EQ(CodeText(0x1234), "P1234");
  EXPECT_EQ(CodeText(0x3FFF), "P3FFF");
  EXPECT_EQ(CodeText(0x5678), "C1678");
  EXPECT_EQ(CodeText(0x9A0B), "B1A0B");
  EXPECT_EQ(CodeText(0xC100), "U0100");
  EXPECT_EQ(CodeText(0xFFFF), "U3FFF");
}

}  // namespace
}  // namespace korval::apps
