// SPDX-License-Identifier: MIT
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "tests/ecu/session/SessionBench.h"
#include "tests/support/Await.h"

namespace korval::ecu {
namespace {

using base::Variant;
using testing::HasSubstr;

class ByNameTest : public testing::Test {
 protected:
  void SetUp() override {
    object->SetProtocol(bench.Engine());
    object->SetNameResolver([](const std::string& name) {
      if (name == "N") return std::string("Speed");
      if (name == "L") return std::string("Limit");
      return std::string(name == "Lost" ? "Nowhere" : "");
    });
  }
  std::int32_t NumberOfSet(const std::string& name, const Variant& value) {
    return NumberOf([&] { tests::Await(object->Set(name, value)); }, &description);
  }
  std::int32_t NumberOfGet(const std::string& name) {
    return NumberOf([&] { tests::Await(object->Get(name)); }, &description);
  }

  SessionBench bench{"><Signal Item='Speed' Value='800'/>"};
  std::shared_ptr<viator3::InstanceObject> object = bench.session->CreateInstance("qor4inst.ENGINE");
  std::string description;
};

TEST_F(ByNameTest, ClassesOfOtherNamesAreUnknown) {
  EXPECT_EQ(NumberOf([&] { bench.session->CreateInstance("other.ENGINE"); }), kUnknownName);
  EXPECT_EQ(NumberOf([&] { bench.session->CreateInstance(""); }), kUnknownName);
}

TEST_F(ByNameTest, GetReadsTheFirstAnswerWithThatItem) {
  EXPECT_EQ(tests::Await(object->Get("Speed")), Variant(800.0));
  EXPECT_EQ(tests::Await(object->Get("N")), Variant(800.0));
}

// The names of two items as each other's short names.
TEST_F(ByNameTest, ShortNameWinsOverTheItemOfThatName) {
  object->SetNameResolver([](const std::string& name) {
    if (name == "Speed") return std::string("Limit");
    return std::string(name == "Limit" ? "Speed" : "");
  });
  EXPECT_EQ(tests::Await(object->Get("Limit")), Variant(800.0));
  tests::Await(object->Set("Speed", 120));
  EXPECT_EQ(bench.Item("WRITE_LIMIT", "Limit")->Value(), Variant(120.0));
  EXPECT_EQ(tests::Await(object->Get("Speed")), Variant(120.0));
  EXPECT_EQ(NumberOfSet("Limit", 1), kReadOnly);
  EXPECT_THAT(description, HasSubstr("Speed (short name Limit)"));
}

TEST_F(ByNameTest, GetOfUnknownNamesIs2010) {
  for (const char* name : {"speed", "Mode", "Lost", ""}) {
    EXPECT_EQ(NumberOfGet(name), kUnknownName) << name;
    EXPECT_THAT(description, HasSubstr(name));
  }
}

TEST_F(ByNameTest, SetIsHeldByTheEcuAndReadBack) {
  tests::Await(object->Set("Limit", 120));
  EXPECT_EQ(tests::Await(object->Get("Limit")), Variant(120.0));
  tests::Await(object->Set("L", "130"));
  EXPECT_EQ(tests::Await(object->Get("L")), Variant(130.0));
  tests::Await(object->Set("State", "running"));
  EXPECT_EQ(tests::Await(object->Get("State")), Variant(std::int32_t{2}));
  tests::Await(object->Set("State", 0.0F));
  EXPECT_EQ(tests::Await(object->Get("State")), Variant(std::int32_t{0}));
}

TEST_F(ByNameTest, SetLeavesTheOtherItemsAsTheyLastStood) {
  tests::Await(object->Set("Limit", 120));
  EXPECT_EQ(tests::Await(object->Get("Active")), Variant(true));
  tests::Await(object->Set("Active", false));
  EXPECT_EQ(tests::Await(object->Get("Limit")), Variant(120.0));
  EXPECT_EQ(tests::Await(object->Get("Active")), Variant(false));
}

TEST_F(ByNameTest, FirstRequestOfTheFileWrites) {
  tests::Await(object->Set("Limit", 120));
  EXPECT_EQ(bench.Item("WRITE_LIMIT", "Limit")->Value(), Variant(120.0));
  EXPECT_EQ(bench.Item("WRITE_LIMIT_TOO", "Limit")->Value(), Variant(std::int32_t{0}));
}

TEST_F(ByNameTest, ScriptVariablesSeeTheSameItems) {
  bench.Item("WRITE_LIMIT", "Active")->SetValue(false);
  tests::Await(object->Set("Limit", 90));
  EXPECT_EQ(tests::Await(object->Get("Active")), Variant(false));
  tests::Await(object->Get("Speed"));
  EXPECT_EQ(bench.Item("READ", "Temp")->Value(), Variant(0.0));
}

TEST_F(ByNameTest, NameThatNothingWritesIs2011AndAnUnknownOne2010) {
  EXPECT_EQ(NumberOfSet("Speed", 1), kReadOnly);
  EXPECT_EQ(NumberOfSet("N", 1), kReadOnly);
  EXPECT_EQ(NumberOfSet("Nothing", 1), kUnknownName);
  EXPECT_EQ(NumberOfSet("Lost", 1), kUnknownName);
}

TEST_F(ByNameTest, RefusedValueIs2012AndNothingIsSent) {
  tests::Await(object->Set("Limit", 120));
  for (const Variant& value :
       {Variant(2560), Variant(-10), Variant("fast"), Variant(), Variant(base::Null{})}) {
    EXPECT_EQ(NumberOfSet("Limit", value), kValueRefused) << value.ToText();
    EXPECT_THAT(description, HasSubstr("Limit"));
  }
  EXPECT_EQ(tests::Await(object->Get("Limit")), Variant(120.0));
}

TEST_F(ByNameTest, WithoutAnEcuNothingIsKnown) {
  const auto fresh = bench.session->CreateInstance("qor4inst.ENGINE");
  EXPECT_EQ(NumberOf([&] { tests::Await(fresh->Get("Speed")); }), kUnknownName);
  EXPECT_EQ(NumberOf([&] { tests::Await(fresh->Set("Limit", 1)); }), kUnknownName);
}

TEST_F(ByNameTest, FailureOfTheRequestIsPassedOn) {
  SessionBench refusing("><Answer Request='3B100C80' Response='7F3B33'/>");
  const auto refused = refusing.session->CreateInstance("qor4inst.ENGINE");
  refused->SetProtocol(refusing.Engine());
  EXPECT_EQ(NumberOf([&] { tests::Await(refused->Set("Limit", 120)); }, &description), kNegativeAnswer);
  EXPECT_THAT(description, HasSubstr("securityAccessDenied"));
}

TEST_F(ByNameTest, ObjectOutlivesItsSession) {
  bench.session.reset();
  EXPECT_EQ(NumberOfGet("Speed"), kLinkLost);
  EXPECT_EQ(NumberOfSet("Limit", 120), kLinkLost);
}

}  // namespace
}  // namespace korval::ecu
