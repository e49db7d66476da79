// SPDX-License-Identifier: MIT
// The function CAN on a real bus: cyclic frames as values, single frames out, messaging files.
#include <chrono>
#include <functional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ecu/session/FrameRequest.h"
#include "tests/ecu/can/CanBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"
#include "tests/support/TempFolder.h"

namespace korval::ecu {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kDbc[] =
    "BO_ 416 Wheel: 8 ABS\n SG_ Speed : 0|16@1+ (0.01,0) [0|0] \"km/h\" X\n"
    " SG_ State : 21|3@1+ (1,0) [0|0] \"\" X\n SG_ Yaw : 31|12@0- (0.5,0) [0|0] \"deg/s\" X\n"
    "BO_ 2147483904 Page: 2 X\n SG_ Number M : 0|8@1+ (1,0) [0|0] \"\" X\n"
    " SG_ Oil m0 : 8|8@1+ (1,-40) [0|0] \"\" X\n SG_ Fuel m1 : 8|8@1+ (1,0) [0|0] \"\" X\n"
    "BA_ \"GenMsgCycleTime\" BO_ 416 400;\nVAL_ 416 State 5 \"rolling\" ;\n";

class CanFunctionTest : public testing::Test {
 protected:
  void Load(const std::string& name, const std::string& content) {
    folder.Write(name, content);
    tests::Await(Can()->LoadMessaging(folder.Path(name)));
  }
  std::shared_ptr<viator3::Ecu> Can() { return bench.session->EcuByFunction("CAN"); }
  /// The item's text after its request was executed, or the failure's number.
  std::string Read(const std::string& name) {
    const auto item = Can()->FindAnswerItem(name);
    if (!item) return "none";
    try {
      tests::Await(item->OwningRequest()->Execute());
      return item->Text();
    } catch (const base::Failure& failure) {
      bench.description = failure.Description();
      return std::to_string(failure.Number());
    }
  }
  std::int32_t SendFrames(const std::string& x) {
    pugi::xml_document document;
    document.load_string(("<can>" + x + "</can>").c_str());
    try {
      tests::Await(bench.session->SendFrames(tests::FramesIn(document)));
      bench.loop->Advance(milliseconds(10));
      return 0;
    } catch (const base::Failure& failure) {
      bench.description = failure.Description();
      return failure.Number();
    }
  }

  /// `happen` happens while the frames wait.
  std::int32_t SendFramesAnd(const std::string& x, const std::function<void()>& happen) {
    bench.loop->At(milliseconds(10), happen);
    return SendFrames(x);
  }

  tests::TempFolder folder;
  CanBench bench;
};

TEST_F(CanFunctionTest, SignalsOfADbcFileHaveTheValuesOfTheLastFrame) {
  Load("bus.dbc", kDbc);
  EXPECT_EQ(Read("Speed"), "2000");
  EXPECT_THAT(bench.description, HasSubstr("Wheel has not come in yet"));
  EXPECT_TRUE(Can()->FindAnswerItem("Speed")->Value().IsEmpty());
  bench.bus.InjectHex(416, "D204A0FFE0000000");
  EXPECT_EQ(Read("Speed"), "12.34");
  EXPECT_EQ(Read("State"), "rolling");
  EXPECT_EQ(Read("Yaw"), "-1");
  EXPECT_EQ(Can()->FindAnswerItem("Speed")->Unit(), "km/h");
  bench.bus.InjectHex(416, "0100000000000000");
  EXPECT_EQ(Read("Speed"), "0.01");
}

TEST_F(CanFunctionTest, MultiplexedSignalsKeepTheValueOfTheirOwnPage) {
  Load("bus.dbc", kDbc);
  const CanIdentifier page{256, true};
  bench.bus.Inject(CanFrame(page, std::array<std::uint8_t, 2>{0, 130}));
  EXPECT_EQ(Read("Oil"), "90");
  EXPECT_EQ(Read("Fuel"), "2000");
  bench.bus.Inject(CanFrame(page, std::array<std::uint8_t, 2>{1, 55}));
  EXPECT_EQ(Read("Oil"), "90");
  EXPECT_EQ(Read("Fuel"), "55");
  EXPECT_EQ(Read("Number"), "1");
}

TEST_F(CanFunctionTest, FrameThatStoppedComingHasNoValueUntilItReturns) {
  Load("bus.dbc", kDbc);
  bench.bus.InjectHex(416, "D204000000000000");
  bench.loop->Advance(WatchedFrame::kMissedCycles * milliseconds(400));
  EXPECT_EQ(Read("Speed"), "12.34");
  bench.loop->Advance(milliseconds(1));
  EXPECT_EQ(Read("Speed"), "2000");
  EXPECT_THAT(bench.description, HasSubstr("has stopped coming in"));
  bench.bus.InjectHex(416, "0100000000000000");
  EXPECT_EQ(Read("Speed"), "0.01");
}

TEST_F(CanFunctionTest, ShortFramesLeaveWhatTheyDoNotHoldWithoutAValue) {
  Load("bus.dbc", kDbc);
  bench.bus.InjectHex(416, "D204");
  EXPECT_EQ(Read("Speed"), "12.34");
  EXPECT_EQ(Read("State"), "");
}

TEST_F(CanFunctionTest, FramesOfAnotherFormatOrIdentifierAreOthers) {
  Load("bus.dbc", kDbc);
  bench.bus.Inject(CanFrame({416, true}, std::array<std::uint8_t, 2>{1, 2}));
  bench.bus.InjectHex(417, "0102");
  EXPECT_EQ(Read("Speed"), "2000");
}

TEST_F(CanFunctionTest, ItemsGoOnWhenTheSameMessagingIsLoadedAgain) {
  Load("bus.dbc", kDbc);
  const auto before = Can()->FindAnswerItem("Speed");
  bench.bus.InjectHex(416, "D204000000000000");
  Load("bus.dbc", kDbc);
  const auto after = Can()->FindAnswerItem("Speed");
  EXPECT_EQ(Read("Speed"), "12.34") << "the frame that came in is still there";
  EXPECT_EQ(before->OwningRequest(), after->OwningRequest());
  bench.bus.InjectHex(416, "0100000000000000");
  EXPECT_EQ(before->Text(), "0.01");
  EXPECT_EQ(after->Text(), "0.01");
}

TEST_F(CanFunctionTest, ItemsOfAFrameThatChangedInTheFileGoOnAsTheyWere) {
  Load("bus.dbc", kDbc);
  const auto before = Can()->FindAnswerItem("Speed");
  const auto request = before->OwningRequest();
  bench.bus.InjectHex(416, "D204000000000000");
  std::string changed = kDbc;
  changed.replace(changed.find("0.01"), 4, "0.02");
  Load("bus.dbc", changed);
  EXPECT_EQ(Read("Speed"), "24.68") << "with the frame that came in before";
  bench.bus.InjectHex(416, "0100000000000000");
  tests::Await(request->Execute());
  EXPECT_EQ(before->Text(), "0.01");
  EXPECT_EQ(Read("Speed"), "0.02");
  Load("bus.dbc", "BO_ 1 Other: 8 X\n SG_ Else : 0|8@1+ (1,0) [0|0] \"\" X\n");
  bench.bus.InjectHex(416, "0200000000000000");
  EXPECT_EQ(before->Text(), "0.02") << "even when the frame is no longer in the file";
}

TEST_F(CanFunctionTest, ItemsAreLiveWithoutBeingExecutedAndHaveNoValueOnceTheirFrameHasGone) {
  Load("bus.dbc", kDbc);
  const auto speed = Can()->FindAnswerItem("Speed");
  EXPECT_TRUE(speed->Value().IsEmpty());
  bench.bus.InjectHex(416, "D204000000000000");
  EXPECT_EQ(speed->Text(), "12.34");
  bench.loop->Advance(seconds(10));
  EXPECT_TRUE(speed->Value().IsEmpty());
  EXPECT_EQ(speed->Text(), "");
}

TEST_F(CanFunctionTest, ReadingByNameWaitsForTheFirstFrameForItsCycle) {
  Load("bus.dbc", kDbc);
  const auto instance = bench.session->CreateInstance("qor4inst.can");
  instance->SetProtocol(Can());
  bench.loop->At(milliseconds(390), [this] { bench.bus.InjectHex(416, "D204000000000000"); });
  EXPECT_EQ(tests::Await(instance->Get("Speed")), base::Variant(12.34));
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(390)));
  EXPECT_EQ(tests::Await(instance->Get("Speed")), base::Variant(12.34))
      << "one that is there is not waited for";
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(390)));
}

TEST_F(CanFunctionTest, ReadingByNameGivesUpAfterTheCycleOrASecond) {
  Load("bus.dbc", kDbc);
  const auto instance = bench.session->CreateInstance("qor4inst.can");
  instance->SetProtocol(Can());
  const auto number = [&](const char* name) {
    try {
      tests::Await(instance->Get(name));
      return 0;
    } catch (const base::Failure& failure) {
      return failure.Number();
    }
  };
  EXPECT_EQ(number("Speed"), 2000);
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(400) + FrameRequest::kJitter));
  EXPECT_EQ(number("Oil"), 2000) << "nothing says how often this one comes";
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(1400) + 2 * FrameRequest::kJitter));
  bench.loop->At(milliseconds(10), [this] { tests::Await(bench.session->Close()); });
  EXPECT_EQ(number("Speed"), 1000);
}

TEST_F(CanFunctionTest, ExecutingAFrameNeverWaits) {
  Load("bus.dbc", kDbc);
  EXPECT_EQ(Read("Speed"), "2000");
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(milliseconds(0)));
}

TEST_F(CanFunctionTest, SignalsAreReadOnly) {
  Load("bus.dbc", kDbc);
  try {
    Can()->FindAnswerItem("Speed")->SetValue(base::Variant(1.0));
    ADD_FAILURE() << "written";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), 2011);
    EXPECT_THAT(failure.Description(), HasSubstr("Wheel"));
  }
}

TEST_F(CanFunctionTest, LeavingTheBusForgetsItsFrames) {
  Load("bus.dbc", kDbc);
  bench.bus.InjectHex(416, "D204000000000000");
  tests::Await(bench.session->SetPort("CAN:model:can0"));
  EXPECT_EQ(Read("Speed"), "2000");
  bench.bus.InjectHex(416, "D204000000000000");
  EXPECT_EQ(Read("Speed"), "12.34");
}

TEST_F(CanFunctionTest, MessagingFileGivesIdentifiersTimingAndBitrate) {
  CanBench other("Name='ABS' KeepAliveMs='0'");
  EXPECT_EQ(other.Send("2101"), "1002");
  folder.Write("messaging.xml",
               "<xml><messaging Bitrate='250000'><Diagnostic Function='ABS' RequestId='740' ResponseId='760' "
               "Padding='AA' StMinUs='500' BlockSize='4'/></messaging></xml>");
  tests::Await(other.session->EcuByFunction("CAN")->LoadMessaging(folder.Path("messaging.xml")));
  other.loop->At(milliseconds(1), [&] { other.bus.InjectHex(0x760, "1008610100010203"); });
  EXPECT_EQ(other.Send("2101"), "2000");
  EXPECT_THAT(other.bus.log, ElementsAre("740#022101AAAAAAAAAA", "740#3004F5AAAAAAAAAA"));
  tests::Await(other.session->SetPort("CAN:model:can0"));
  EXPECT_EQ(other.bitrates, (std::vector<std::int32_t>{500000, 250000, 250000}))
      << "an interface opened later has the bit rate from the start";
}

TEST_F(CanFunctionTest, WhatIsLeftOutOfADbcFileIsNoted) {
  Load("bus.dbc", "BO_ 416 Wheel: 8 ABS\n SG_ Speed\n");
  EXPECT_THAT(bench.notes, ElementsAre(folder.Path("bus.dbc") + ": Line 2: no signal, left out."));
}

TEST_F(CanFunctionTest, SingleFramesGoOutOnTheBus) {
  EXPECT_EQ(SendFrames("<x><i>291</i><s><d>01020304</d></s><i>2048</i><s><d/></s></x><x><i>-2147483648</"
                       "i><s><d>AA</d></s></x>"),
            0);
  EXPECT_THAT(bench.bus.log, ElementsAre("123#01020304", "00000800#", "00000000#AA"));
}

TEST_F(CanFunctionTest, SingleFramesThatCannotGoOutSayWhy) {
  EXPECT_EQ(SendFrames("<x><i>536870912</i><s><d>00</d></s></x>"), 2012);
  EXPECT_THAT(bench.description, HasSubstr("29 bits"));
  EXPECT_EQ(SendFrames("<x><i>1</i><s><d>00</d></s><i>536870912</i><s><d>00</d></s></x>"), 2012);
  bench.bus.SetQueue(0);
  EXPECT_EQ(SendFrames("<x><i>1</i><s><d>00</d></s></x>"), 1015);
  EXPECT_THAT(bench.description, HasSubstr("the transmit queue of the CAN interface stayed full"));
  EXPECT_EQ(SendFramesAnd("<x><i>1</i><s><d>00</d></s></x>", [&] { tests::Await(bench.session->Close()); }),
            1000);
  tests::Await(bench.session->SetPort("CAN:model:can0"));
  bench.bus.Unplug();
  EXPECT_EQ(SendFrames("<x><i>1</i><s><d>00</d></s></x>"), 1000);
  EXPECT_THAT(bench.description, HasSubstr("unplugged"));
  EXPECT_THAT(bench.bus.log, testing::IsEmpty());
}

TEST_F(CanFunctionTest, PortsThatNameNoBusOrCannotBeOpenedAre1002) {
  for (const char* port : {"CAN:", "CAN:socketcan", "CAN:socketcan:"}) {
    try {
      tests::Await(bench.session->SetPort(port));
      ADD_FAILURE() << port;
    } catch (const base::Failure& failure) {
      EXPECT_EQ(failure.Number(), 1002);
      EXPECT_THAT(failure.Description(), HasSubstr("CAN:PLUGIN:INTERFACE"));
    }
  }
  bench.bus.Unplug();
  try {
    tests::Await(bench.session->SetPort("CAN:model:can0"));
    ADD_FAILURE() << "an unplugged adapter was opened";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), 1002);
    EXPECT_THAT(failure.Description(), HasSubstr("CAN:model:can0: the model adapter is unplugged"));
  }
}

}  // namespace
}  // namespace korval::ecu
