// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "model/DtcStore.h"
#include "tests/support/ErrorRecord.h"

namespace korval::model {
namespace {

using tests::FailureOf;

constexpr char kNotRead[] = "1 Read DTC before to get value";
constexpr char kAllRead[] = "1 All DTC already read";

class DtcStoreTest : public testing::Test {
 protected:
  void FillTwo() {
    store_.InitFailures(2);
    store_.SetFailure(1, 0x1234, 0x20);
    store_.SetFailure(2, 0xD678, 0xA0);
  }

  DtcStore store_;
};

TEST_F(DtcStoreTest, NothingCanBeReadBeforeTheDtcsAre) {
  EXPECT_EQ(FailureOf([&] { store_.dtccode(); }), kNotRead);
  EXPECT_EQ(FailureOf([&] { store_.dtcstatus(); }), kNotRead);
  EXPECT_EQ(FailureOf([&] { store_.NextDtc(); }), kNotRead);
}

TEST_F(DtcStoreTest, FirstRecordIsUnderTheCursorAtOnce) {
  FillTwo();
  EXPECT_EQ(store_.dtccode(), 0x1234);
  EXPECT_EQ(store_.dtcstatus(), 0x20);
}

TEST_F(DtcStoreTest, NextWalksToTheEndAndThenFails) {
  FillTwo();
  EXPECT_EQ(store_.NextDtc(), 2);
  EXPECT_EQ(store_.dtccode(), 0xD678);
  EXPECT_EQ(store_.dtcstatus(), 0xA0);
  EXPECT_EQ(store_.NextDtc(), -1);
  EXPECT_EQ(FailureOf([&] { store_.NextDtc(); }), kAllRead);
  EXPECT_EQ(FailureOf([&] { store_.dtccode(); }), kAllRead);
}

TEST_F(DtcStoreTest, NoRecordsAreAllRead) {
  store_.InitFailures(0);
  EXPECT_EQ(FailureOf([&] { store_.dtccode(); }), kAllRead);
  EXPECT_EQ(FailureOf([&] { store_.dtcstatus(); }), kAllRead);
  EXPECT_EQ(FailureOf([&] { store_.NextDtc(); }), kAllRead);
}

TEST_F(DtcStoreTest, ClearingMakesItUnread) {
  FillTwo();
  store_.ClearFailures();
  EXPECT_EQ(FailureOf([&] { store_.dtccode(); }), kNotRead);
}

TEST_F(DtcStoreTest, RoomForNewRecordsForgetsTheOldOnes) {
  FillTwo();
  store_.InitFailures(1);
  EXPECT_EQ(store_.dtccode(), 0);
}

TEST_F(DtcStoreTest, IndexOutsideZeroToCountRaisesSubscriptError) {
  FillTwo();
  store_.SetFailure(0, 1, 1);
  EXPECT_EQ(FailureOf([&] { store_.SetFailure(3, 1, 1); }), "9 Subscript out of range: DTC record 3 of 2");
  EXPECT_EQ(FailureOf([&] { store_.SetFailure(-1, 1, 1); }), "9 Subscript out of range: DTC record -1 of 2");
}

TEST_F(DtcStoreTest, CursorLeftBehindByASmallerCountRaisesSubscriptError) {
  FillTwo();
  store_.NextDtc();
  store_.InitFailures(0);
  EXPECT_EQ(FailureOf([&] { store_.dtccode(); }), "9 Subscript out of range: DTC record 2 of 0");
  EXPECT_EQ(store_.NextDtc(), -1);
}

}  // namespace
}  // namespace korval::model
