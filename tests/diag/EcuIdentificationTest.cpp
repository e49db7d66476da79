// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "diag/EcuIdentification.h"
#include "tests/support/Await.h"
#include "tests/support/FakeSession.h"

namespace korval::diag {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EcuIdentificationTest : public testing::Test {
 protected:
  std::string Read() { return tests::Await(ReadEcuIdentification(session_, ecu_)); }

  void FailInitialisation(std::int32_t number) {
    ecu_->on_initialise = [number] { throw base::Failure(number, "the reason"); };
  }

  std::shared_ptr<tests::FakeSession> session_ = std::make_shared<tests::FakeSession>();
  std::shared_ptr<tests::FakeEcu> ecu_ = session_->AddEcu("MOTOR", "Engine control", "KWP2000");
};

TEST_F(EcuIdentificationTest, AnswerIsGivenInHexadecimal) {
  ecu_->on_send = [](const base::ByteBuffer&, base::ByteBuffer& answer) {
    answer = {0x61, 0x80, 0x41, 0xFF};
  };
  EXPECT_EQ(Read(), "618041FF");
  EXPECT_THAT(ecu_->sent, ElementsAre("2180"));
  EXPECT_EQ(ecu_->initialisations, 1);
}

TEST_F(EcuIdentificationTest, InitialisedEcuIsNotInitialisedAgain) {
  ecu_->initialised = true;
  Read();
  EXPECT_EQ(ecu_->initialisations, 0);
}

TEST_F(EcuIdentificationTest, CanNetworkErrorHasItsOwnText) {
  FailInitialisation(1015);
  EXPECT_EQ(Read(), "ECU power off or missing, or CAN network error");
  EXPECT_THAT(ecu_->sent, IsEmpty());
}

TEST_F(EcuIdentificationTest, NoAnswerMeansPowerOff) {
  FailInitialisation(2000);
  EXPECT_EQ(Read(), "ECU power off or missing");
}

TEST_F(EcuIdentificationTest, OtherInitialisationErrorShowsItsDescription) {
  FailInitialisation(2042);
  EXPECT_EQ(Read(), "Init Error : the reason");
}

TEST_F(EcuIdentificationTest, FailedSendShowsBothBuffers) {
  ecu_->on_send = [](const base::ByteBuffer&, base::ByteBuffer& answer) {
    answer = {0x7F, 0x21, 0x11};
    throw base::Failure(2001, "negative answer");
  };
  EXPECT_EQ(Read(), "Read ident error : negative answer s=2180 r=7F2111");
}

TEST_F(EcuIdentificationTest, DiagOnCanWithoutMessagingSendsNothing) {
  const auto abs = session_->AddEcu("ABS", "Brakes", "DiagOnCAN");
  EXPECT_EQ(tests::Await(ReadEcuIdentification(session_, abs)),
            "No CAN messaging loaded, unable to read identification");
  EXPECT_EQ(abs->initialisations, 0);
  EXPECT_THAT(abs->sent, IsEmpty());
}

TEST_F(EcuIdentificationTest, DiagOnCanWithMessagingIsRead) {
  const auto abs = session_->AddEcu("ABS", "Brakes", "DiagOnCAN");
  session_->messaging_loaded = true;
  tests::Await(ReadEcuIdentification(session_, abs));
  EXPECT_THAT(abs->sent, ElementsAre("2180"));
}

}  // namespace
}  // namespace korval::diag
