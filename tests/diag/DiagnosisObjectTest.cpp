// SPDX-License-Identifier: MIT
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "diag/DiagnosisObject.h"
#include "host/trace/TextTerminal.h"
#include "tests/support/Await.h"
#include "tests/support/FakeSession.h"

namespace korval::diag {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::FakeSession;

class DiagnosisObjectTest : public testing::Test {
 protected:
  DiagnosisObjectTest() { diagnosis_.SetServerFolder("/opt/server", "/opt/application"); }

  bool Create() {
    reply_.Clear();
    return tests::Await(diagnosis_.CreateDiagnosisObject(reply_));
  }

  host::TextTerminal terminal_;
  host::TraceConsole console_{terminal_};
  std::shared_ptr<FakeSession> session_ = std::make_shared<FakeSession>();
  int created_ = 0;
  int dropped_ = 0;
  base::ByteBuffer reply_;
  DiagnosisObject diagnosis_{console_,
                             [this] {
                               ++created_;
                               return session_;
                             },
                             [this] { ++dropped_; }};
};

TEST_F(DiagnosisObjectTest, CreationOpensTheReportedPort) {
  EXPECT_TRUE(Create());
  const std::string errors_file = (std::filesystem::path("/opt/server") / "errors.xml").string();
  EXPECT_THAT(session_->log, ElementsAre("Language=en", "ErrorsFile=" + errors_file, "Port=COM7"));
  EXPECT_EQ(terminal_.Text(), "Create diagnosis object\r\n  Server = /opt/server\r\n");
  EXPECT_EQ(diagnosis_.Session(), session_);
  EXPECT_FALSE(diagnosis_.SessionIsExternal());
  EXPECT_TRUE(reply_.Empty());
}

TEST_F(DiagnosisObjectTest, SecondCreationReusesTheSessionSilently) {
  Create();
  const std::string before = terminal_.Text();
  EXPECT_TRUE(Create());
  EXPECT_EQ(created_, 1);
  EXPECT_EQ(terminal_.Text(), before);
}

TEST_F(DiagnosisObjectTest, FailedOpeningIsTracedAnsweredAndTriedAnew) {
  session_->on_set_port = [](const std::string&) { throw base::Failure(1002, "no interface"); };
  EXPECT_FALSE(Create());
  EXPECT_EQ(terminal_.Text(),
            "Create diagnosis object\r\n  Server = /opt/server\r\n"
            "Diagnosis Communication port = COM7\r\nOpen Diagnostic Session error : no interface\r\n");
  EXPECT_EQ(reply_.ToHex(), "03EA000C6E6F20696E74657266616365");
  EXPECT_EQ(diagnosis_.Session(), nullptr);
  session_->on_set_port = {};
  EXPECT_TRUE(Create());
  EXPECT_EQ(created_, 2);
}

TEST_F(DiagnosisObjectTest, FailedFactoryIsAnsweredWithoutAPort) {
  DiagnosisObject diagnosis(
      console_, []() -> std::shared_ptr<viator3::Session> { throw base::Failure(1001, "none"); }, [] {});
  EXPECT_FALSE(tests::Await(diagnosis.CreateDiagnosisObject(reply_)));
  EXPECT_EQ(terminal_.Text(),
            "Create diagnosis object\r\n  Server = \r\nDiagnosis Communication port = \r\n"
            "Open Diagnostic Session error : none\r\n");
  EXPECT_EQ(reply_.ToHex(), "03E900046E6F6E65");
}

TEST_F(DiagnosisObjectTest, SessionReleasedWhileOpeningIsAFailure) {
  session_->on_set_port = [this](const std::string& port) {
    if (!port.empty()) diagnosis_.ReleaseDiagnosisObject();
  };
  EXPECT_FALSE(Create());
  EXPECT_EQ(diagnosis_.Session(), nullptr);
  EXPECT_EQ(reply_.Word(0), 1000);
}

TEST_F(DiagnosisObjectTest, ReleaseDropsTheCollectionsThenClosesThenFreesThePort) {
  Create();
  session_->log.clear();
  session_->on_close = [this] { EXPECT_EQ(dropped_, 1); };
  diagnosis_.ReleaseDiagnosisObject();
  EXPECT_THAT(session_->log, ElementsAre("Close", "Port="));
  EXPECT_EQ(diagnosis_.Session(), nullptr);
}

TEST_F(DiagnosisObjectTest, ReleaseGoesOnAfterFailures) {
  Create();
  session_->log.clear();
  session_->on_close = [] { throw base::Failure(1000, "gone"); };
  session_->on_set_port = [](const std::string&) { throw base::Failure(1002, "gone"); };
  diagnosis_.ReleaseDiagnosisObject();
  EXPECT_THAT(session_->log, ElementsAre("Close", "Port="));
  EXPECT_EQ(diagnosis_.Session(), nullptr);
}

TEST_F(DiagnosisObjectTest, ReleaseWithoutASessionDoesNothing) {
  diagnosis_.ReleaseDiagnosisObject();
  EXPECT_EQ(dropped_, 0);
}

TEST_F(DiagnosisObjectTest, ReleaseInsideTheClosingDoesNothingMore) {
  Create();
  session_->log.clear();
  session_->on_close = [this] { diagnosis_.ReleaseDiagnosisObject(); };
  diagnosis_.ReleaseDiagnosisObject();
  EXPECT_THAT(session_->log, ElementsAre("Close", "Port="));
  EXPECT_EQ(dropped_, 1);
}

TEST_F(DiagnosisObjectTest, HostSessionIsUsedAndReleasedButNotClosed) {
  diagnosis_.SetSession(session_);
  EXPECT_TRUE(diagnosis_.SessionIsExternal());
  EXPECT_TRUE(Create());
  EXPECT_EQ(created_, 0);
  diagnosis_.ReleaseDiagnosisObject();
  EXPECT_THAT(session_->log, IsEmpty());
  EXPECT_EQ(dropped_, 1);
  EXPECT_EQ(diagnosis_.Session(), nullptr);
}

TEST_F(DiagnosisObjectTest, HostSessionIsClosedOnRequest) {
  diagnosis_.SetSession(session_);
  diagnosis_.ReleaseDiagnosisObject(DiagnosisObject::HostSession::kClose);
  EXPECT_THAT(session_->log, ElementsAre("Close", "Port="));
}

TEST_F(DiagnosisObjectTest, SessionOfOurOwnFollowsAReleasedHostSession) {
  diagnosis_.SetSession(std::make_shared<FakeSession>());
  diagnosis_.ReleaseDiagnosisObject();
  EXPECT_TRUE(Create());
  EXPECT_FALSE(diagnosis_.SessionIsExternal());
  session_->log.clear();
  diagnosis_.ReleaseDiagnosisObject();
  EXPECT_THAT(session_->log, ElementsAre("Close", "Port="));
}

TEST_F(DiagnosisObjectTest, RequiringAMissingSessionRaises1000) {
  try {
    diagnosis_.RequireSession();
    FAIL() << "no failure";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), 1000);
  }
}

}  // namespace
}  // namespace korval::diag
