// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "model/KorvAsapValues.h"

namespace korval::model {
namespace {

TEST(KorvAsapValuesTest, KeepsEveryNameSentRepeatsIncluded) {
  KorvAsapValues values;
  values.Add("N", 1, "EngineSpeed");
  values.Add("N", 2, "EngineSpeed");
  EXPECT_EQ(values.Count(), 2);
  EXPECT_EQ(values.Item(2)->valueName, "N");
  EXPECT_EQ(values.Item(2)->lunId, 2);
  EXPECT_EQ(values.Item(2)->korvName, "EngineSpeed");
}

TEST(KorvAsapValuesTest, PresentKeyRaises) {
  KorvAsapValues values;
  values.Add("N", 1, "EngineSpeed", "key");
  EXPECT_THROW(values.Add("T", 1, "CoolantTemp", "key"), base::Failure);
  EXPECT_EQ(values.Item("key")->valueName, "N");
}

}  // namespace
}  // namespace korval::model
