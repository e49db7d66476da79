// SPDX-License-Identifier: MIT
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/ErrorNumbers.h"
#include "tests/ecu/session/SessionBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"
#include "tests/support/TempFolder.h"

namespace korval::ecu {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kMessaging[] =
    "<xml><messaging Bitrate='500000'><Frame Id='1A0' Name='Wheel' CycleMs='10'>"
    "<DataItem Name='WheelSpeed' FirstByte='1' BitsCount='16' Step='0.01' Unit='km/h'/></Frame>"
    "<Frame Id='2C0' Name='Brake'><DataItem Name='Pedal' FirstByte='1'/></Frame></messaging></xml>";

class CanTest : public testing::Test {
 protected:
  void LoadMessaging(const std::string& text) {
    folder.Write("messaging.xml", text);
    tests::Await(Can()->LoadMessaging(folder.Path("messaging.xml")));
  }
  std::shared_ptr<viator3::Ecu> Can() { return bench.session->EcuByFunction("CAN"); }
  std::int32_t SendFrames(const std::string& x) {
    pugi::xml_document document;
    document.load_string(("<can>" + x + "</can>").c_str());
    return NumberOf([&] { tests::Await(bench.session->SendFrames(tests::FramesIn(document))); },
                    &description);
  }

  tests::TempFolder folder;
  SessionBench bench;
  std::string description;
};

TEST_F(CanTest, FunctionCanIsAlwaysThereAndNeedsNoInitialisation) {
  const auto can = Can();
  EXPECT_EQ(can->Function(), "CAN");
  EXPECT_EQ(can->Name(), "CAN");
  EXPECT_EQ(can->Protocol(), "CAN");
  EXPECT_TRUE(can->Initialised());
  tests::Await(can->Initialise());
  tests::Await(can->Reinitialise());
  EXPECT_THAT(can->RequestList(), IsEmpty());
  EXPECT_THAT(can->ReferenceData(), IsEmpty());
  EXPECT_EQ(can->FindAnswerItem("WheelSpeed"), nullptr);
}

TEST_F(CanTest, FramesOfTheMessagingFileAreItsRequests) {
  EXPECT_FALSE(bench.session->MessagingLoaded());
  LoadMessaging(kMessaging);
  EXPECT_TRUE(bench.session->MessagingLoaded());
  ASSERT_THAT(Can()->RequestList(), SizeIs(2));
  EXPECT_EQ(Can()->RequestList()[0]->Name(), "Wheel");
  EXPECT_THAT(Can()->RequestList()[0]->Parameters(), IsEmpty());
  const auto speed = Can()->FindAnswerItem("WheelSpeed");
  ASSERT_NE(speed, nullptr);
  EXPECT_EQ(speed->Unit(), "km/h");
  EXPECT_TRUE(speed->Value().IsEmpty());
  EXPECT_EQ(speed->OwningRequest(), Can()->RequestList()[0]);
}

TEST_F(CanTest, FrameThatHasNotComeInIs2000) {
  LoadMessaging(kMessaging);
  EXPECT_EQ(NumberOf([&] { tests::Await(Can()->RequestList()[0]->Execute()); }, &description), kNoAnswer);
  EXPECT_THAT(description, HasSubstr("Wheel"));
}

TEST_F(CanTest, LaterMessagingTakesThePlaceAndAFailedOneDoesNot) {
  LoadMessaging(kMessaging);
  const auto wheel = Can()->RequestList()[0];
  LoadMessaging("<xml><messaging><Frame Id='300' Name='Other'/></messaging></xml>");
  ASSERT_THAT(Can()->RequestList(), SizeIs(1));
  EXPECT_EQ(Can()->RequestList()[0]->Name(), "Other");
  EXPECT_EQ(wheel->Name(), "Wheel");
  EXPECT_NE(NumberOf([&] { tests::Await(Can()->LoadMessaging(folder.Path("missing.xml"))); }), 0);
  EXPECT_NE(NumberOf([&] { LoadMessaging("<xml/>"); }), 0);
  EXPECT_THAT(Can()->RequestList(), SizeIs(1));
  EXPECT_TRUE(bench.session->MessagingLoaded());
}

TEST_F(CanTest, DiagnosticRequestsAndMessagingOfOtherFunctionsAreRefused) {
  base::ByteBuffer answer{0x11};
  EXPECT_EQ(NumberOf([&] { tests::Await(Can()->Send(base::ByteBuffer{0x3E}, answer)); }, &description),
            kValueRefused);
  EXPECT_THAT(description, HasSubstr("3E"));
  EXPECT_TRUE(answer.Empty());
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.Engine()->LoadMessaging("messaging.xml")); }), kUnknownName);
}

TEST_F(CanTest, FramesGoOutInTheirOrder) {
  EXPECT_EQ(SendFrames("<x i='0'><i>291</i><s><d>01020304</d></s><i>2015</i><s><d/></s></x>"
                       "<x i='0'><i>-1</i><s><d>aAbB</d></s></x>"),
            0);
  EXPECT_THAT(bench.frames, ElementsAre("291:01020304", "2015:", "-1:AABB"));
}

TEST_F(CanTest, EmptyDocumentsSendNothing) {
  EXPECT_EQ(SendFrames("<x i='0'/>"), 0);
  EXPECT_EQ(SendFrames(""), 0);
  pugi::xml_document nothing;
  EXPECT_EQ(NumberOf([&] { tests::Await(bench.session->SendFrames(tests::FramesIn(nothing))); }), 0);
  EXPECT_THAT(bench.frames, IsEmpty());
}

TEST_F(CanTest, WhatIsNoFrameIs2012AndNothingIsSent) {
  for (const char* bad : {"<i>2</i><s><d>0G</d></s>", "<i>2</i><s><d>012</d></s>",
                          "<i>2</i><s><d>000102030405060708</d></s>"}) {
    EXPECT_EQ(SendFrames("<x><i>1</i><s><d>00</d></s>" + std::string(bad) + "</x>"), kValueRefused) << bad;
    EXPECT_FALSE(description.empty());
  }
  EXPECT_THAT(bench.frames, IsEmpty());
}

TEST_F(CanTest, ClosedSessionSendsNothing) {
  tests::Await(bench.session->Close());
  EXPECT_EQ(SendFrames("<x><i>1</i><s><d>00</d></s></x>"), kLinkLost);
  EXPECT_THAT(bench.frames, IsEmpty());
}

TEST(CanWithoutRecorderTest, FramesAreSentToNobody) {
  const auto session = CreateSession({std::make_shared<tests::ManualEventLoop>(), "SIM", "", {}});
  tests::Await(session->SetPort("SIM"));
  pugi::xml_document document;
  document.load_string("<can><x><i>1</i><s><d>00</d></s></x></can>");
  EXPECT_EQ(NumberOf([&] { tests::Await(session->SendFrames(tests::FramesIn(document))); }), 0);
}

}  // namespace
}  // namespace korval::ecu
