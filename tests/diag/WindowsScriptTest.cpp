// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "diag/WindowsScript.h"
#include "host/trace/TextTerminal.h"
#include "tests/support/Await.h"
#include "tests/support/FakeSession.h"

namespace korval::diag {
namespace {

using tests::FakeInstance;
using tests::FakeSession;

class PlainFile : public ScriptFile {
 public:
  const std::string& BinaryFile() const override { return binary_file; }
  const std::string& KorvFunction() const override { return function; }
  std::string KorvDataName(const std::string& name) const override {
    return name == "N" ? "EngineSpeed" : "";
  }
  std::shared_ptr<viator3::InstanceObject> WshObject() const override { return object; }
  void SetWshObject(std::shared_ptr<viator3::InstanceObject> new_object) override {
    object = std::move(new_object);
  }

  std::string binary_file = "ENGINE";
  std::string function = "MOTOR";
  std::shared_ptr<viator3::InstanceObject> object;
};

class WindowsScriptTest : public testing::Test {
 protected:
  WindowsScriptTest() { diagnosis_.SetSession(session_); }

  void ExpectFailure(std::int32_t number, const std::string& description) {
    try {
      tests::Await(script_.Get(file_, "EngineSpeed"));
      FAIL() << "no failure";
    } catch (const base::Failure& failure) {
      EXPECT_EQ(failure.Number(), number);
      EXPECT_EQ(failure.Description(), description);
    }
  }

  host::TextTerminal terminal_;
  host::TraceConsole console_{terminal_};
  std::shared_ptr<FakeSession> session_ = std::make_shared<FakeSession>();
  std::shared_ptr<tests::FakeEcu> ecu_ = session_->AddEcu("MOTOR", "Engine control", "KWP2000");
  std::shared_ptr<PlainFile> file_ = std::make_shared<PlainFile>();
  DiagnosisObject diagnosis_{console_, [this] { return session_; }, [] {}};
  WindowsScript script_{diagnosis_};
};

TEST_F(WindowsScriptTest, FirstAccessCreatesTheInstanceObjectOnce) {
  session_->instance->values["EngineSpeed"] = 812.5;
  EXPECT_EQ(tests::Await(script_.Get(file_, "EngineSpeed")), base::Variant(812.5));
  EXPECT_EQ(tests::Await(script_.Get(file_, "EngineSpeed")), base::Variant(812.5));
  EXPECT_THAT(session_->log, testing::ElementsAre("CreateInstance=qor4inst.ENGINE"));
  EXPECT_EQ(session_->instance->protocol, ecu_);
  EXPECT_EQ(file_->object, session_->instance);
}

TEST_F(WindowsScriptTest, SetPassesTheValueWithItsType) {
  session_->instance->values["IdleSpeed"] = 0;
  tests::Await(script_.Set(file_, "IdleSpeed", 12.5F));
  EXPECT_EQ(session_->instance->values["IdleSpeed"], base::Variant(12.5F));
}

TEST_F(WindowsScriptTest, ShortNameResolvesThroughTheFile) {
  session_->instance->values["EngineSpeed"] = 7;
  EXPECT_EQ(tests::Await(script_.Get(file_, "N")), base::Variant(7));
}

TEST_F(WindowsScriptTest, InstanceObjectDoesNotKeepItsFileAlive) {
  session_->instance->values["EngineSpeed"] = 7;
  tests::Await(script_.Get(file_, "EngineSpeed"));
  const std::weak_ptr<PlainFile> watched = file_;
  file_.reset();
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(session_->instance->resolver("N"), "");
}

TEST_F(WindowsScriptTest, FailedCreationIs10010AndIsTriedAgain) {
  session_->instance = nullptr;
  ExpectFailure(10010, "CreateObject : qor4inst.ENGINE  Error : no such class");
  ExpectFailure(10010, "CreateObject : qor4inst.ENGINE  Error : no such class");
  EXPECT_EQ(session_->log.size(), 2U);
  EXPECT_EQ(file_->object, nullptr);
}

TEST_F(WindowsScriptTest, MissingSessionIs10010) {
  diagnosis_.ReleaseDiagnosisObject();
  ExpectFailure(10010, "CreateObject : qor4inst.ENGINE  Error : No diagnostic session, send init first");
}

TEST_F(WindowsScriptTest, UnknownFunctionIs10011AndEmptiesTheObject) {
  file_->function = "OTHER";
  ExpectFailure(10011, "Set obj.Protocol  Error : no ECU file for the function OTHER");
  EXPECT_EQ(file_->object, nullptr);
}

TEST_F(WindowsScriptTest, RefusedProtocolIs10011AndEmptiesTheObject) {
  session_->instance->on_set_protocol = [] { throw base::Failure(5, "refused"); };
  ExpectFailure(10011, "Set obj.Protocol  Error : refused");
  EXPECT_EQ(file_->object, nullptr);
}

TEST_F(WindowsScriptTest, FailedAccessIs10012AndKeepsTheObject) {
  ExpectFailure(10012, "obj.EngineSpeed  Error : unknown name EngineSpeed");
  EXPECT_EQ(file_->object, session_->instance);
  try {
    tests::Await(script_.Set(file_, "Idle", 1));
    FAIL() << "no failure";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), 10012);
    EXPECT_EQ(failure.Description(), "obj.Idle  Error : unknown name Idle");
  }
}

TEST_F(WindowsScriptTest, SessionReleasedInsideAnAccessSurvivesUntilItReturns) {
  session_->instance->values["EngineSpeed"] = 7;
  const std::weak_ptr<FakeSession> watched = session_;
  FakeInstance& instance = *session_->instance;
  bool alive_inside = false;
  instance.on_access = [&] {
    session_.reset();
    file_->object.reset();
    diagnosis_.ReleaseDiagnosisObject();
    alive_inside = !watched.expired();
    throw base::Failure(1000, "closed");
  };
  ExpectFailure(10012, "obj.EngineSpeed  Error : closed");
  EXPECT_TRUE(alive_inside);
  EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace korval::diag
