// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "base/Errand.h"
#include "base/Failure.h"

namespace korval::base {
namespace {

TEST(Errand, WhatIsDoneForNobodyIsWanted) {
  EXPECT_TRUE(Errand::IsWanted());
  EXPECT_NO_THROW(Errand::RequireWanted());
}

TEST(Errand, IsWantedUntilItIsCalledOff) {
  Errand errand;
  EXPECT_NO_THROW(Errand::RequireWanted());
  errand.CallOff();
  EXPECT_FALSE(Errand::IsWanted());
  EXPECT_THROW(Errand::RequireWanted(), Failure);
}

TEST(Errand, TheInnerOneCountsAndThenTheOuterOneAgain) {
  Errand outer;
  outer.CallOff();
  {
    const Errand inner;
    EXPECT_TRUE(Errand::IsWanted());
  }
  EXPECT_FALSE(Errand::IsWanted());
}

TEST(Errand, TheEventsInItsWaitAreNoPartOfIt) {
  Errand errand;
  {
    const Errand::Wait wait;
    EXPECT_NO_THROW(wait.RequireWanted());
    errand.CallOff();
    EXPECT_TRUE(Errand::IsWanted());
    EXPECT_THROW(wait.RequireWanted(), Failure);
  }
  EXPECT_FALSE(Errand::IsWanted());
}

TEST(Errand, AWaitForNobodyIsNeverCalledOff) {
  const Errand::Wait wait;
  EXPECT_NO_THROW(wait.RequireWanted());
}

}  // namespace
}  // namespace korval::base
