// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "protocol/SessionState.h"
#include "tests/support/FakeStatusView.h"

namespace korval::protocol {
namespace {

using State = SessionState::State;

class SessionStateTest : public ::testing::Test {
 protected:
  tests::FakeStatusView view_;
  SessionState state_{view_};
};

TEST_F(SessionStateTest, StartsIdle) { EXPECT_EQ(state_.Current(), State::kIdle); }

TEST_F(SessionStateTest, HasTheNumbersOfTheProtocol) {
  EXPECT_EQ(static_cast<int>(State::kIdle), 0);
  EXPECT_EQ(static_cast<int>(State::kInit), 1);
  EXPECT_EQ(static_cast<int>(State::kIdentify), 2);
  EXPECT_EQ(static_cast<int>(State::kFileSelected), 3);
}

TEST_F(SessionStateTest, EachStateHasItsText) {
  const struct {
    State state;
    const char* text;
  } rows[] = {{State::kInit, "Status: Init"},
              {State::kIdentify, "Status: Identify"},
              {State::kFileSelected, "Status: Select File"},
              {State::kIdle, "Status: Idle"}};
  for (const auto& row : rows) {
    state_.Set(row.state);
    EXPECT_EQ(state_.Current(), row.state);
    EXPECT_EQ(view_.session_status, row.text);
  }
}

TEST_F(SessionStateTest, TheFirstPanelFollowsIdleAndInitOnly) {
  state_.Set(State::kIdle);
  EXPECT_EQ(view_.panels["Status"], "Wait init");
  state_.Set(State::kInit);
  EXPECT_EQ(view_.panels["Status"], "Init");
  state_.Set(State::kIdentify);
  state_.Set(State::kFileSelected);
  EXPECT_EQ(view_.panels["Status"], "Init");
  state_.Set(State::kIdle);
  EXPECT_EQ(view_.panels["Status"], "Wait init");
}

TEST_F(SessionStateTest, AfterIdentifyTheRemoteSystemIsShownWithItsVersion) {
  const struct {
    std::int32_t version;
    const char* name;
    const char* text;
  } rows[] = {{0x0201, "Bench", "Remote system name : Bench Version 2.1"},
              {0x0000, "", "Remote system name :  Version 0.0"},
              {0x00FF, "a", "Remote system name : a Version 0.255"},
              {0x0100, "a", "Remote system name : a Version 1.0"},
              {0xFFFF, "\xC2\xB0", "Remote system name : \xC2\xB0 Version 255.255"}};
  for (const auto& row : rows) {
    state_.Set(State::kInit);
    state_.SetRemote(row.version, row.name);
    state_.Set(State::kIdentify);
    EXPECT_EQ(view_.remote_system, row.text);
  }
}

TEST_F(SessionStateTest, NobodyIsShownBeforeIdentify) {
  state_.Set(State::kIdle);
  EXPECT_EQ(view_.remote_system, "");
  state_.Set(State::kInit);
  EXPECT_EQ(view_.remote_system, "");
}

}  // namespace
}  // namespace korval::protocol
