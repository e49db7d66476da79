// SPDX-License-Identifier: MIT
#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeCanDevice.h"
#include "QtTest.h"
#include "base/Failure.h"
#include "platform/QtCanBus.h"

namespace korval::platform {
namespace {

using ecu::CanBus;
using ecu::CanFrame;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const CanFrame kFrame({0x123, true}, std::array<std::uint8_t, 2>{0xAB, 0xCD});

class QtCanBusTest : public QtTest {
 protected:
  QtCanBusTest() { Open({{}, std::chrono::hours(1), std::chrono::hours(1)}); }

  /// A bus that looks after its adapter as often as it can.
  void OpenWatched(std::function<QtCanBus::State()> state) {
    Open({std::move(state), std::chrono::milliseconds(0), std::chrono::milliseconds(0)});
  }
  void Open(QtCanBus::Watch watch) {
    device = new FakeCanDevice;
    bus = std::make_unique<QtCanBus>(std::unique_ptr<QCanBusDevice>(device), "CAN interface can0 (fake)",
                                     std::move(watch));
    CanBus::Events events;
    events.on_frame = [this](const CanFrame& frame) { frames.push_back(frame); };
    events.on_sent = [this] { ++sent; };
    events.on_error = [this](CanBus::Error error, const std::string& text) {
      errors.push_back(error);
      error_text = text;
    };
    events.on_recovered = [this] { ++recovered; };
    bus->SetEvents(std::move(events));
  }

  FakeCanDevice* device = nullptr;  // the bus owns it
  std::unique_ptr<QtCanBus> bus;
  std::vector<CanFrame> frames;
  std::vector<CanBus::Error> errors;
  std::string error_text;
  int sent = 0;
  int recovered = 0;
};

TEST_F(QtCanBusTest, FramesKeepIdentifierFormatAndBytes) {
  bus->Send(kFrame);
  ASSERT_THAT(device->written, SizeIs(1));
  EXPECT_EQ(device->written[0].frameId(), 0x123U);
  EXPECT_TRUE(device->written[0].hasExtendedFrameFormat());
  EXPECT_EQ(device->written[0].payload(), QByteArray("\xAB\xCD"));
  device->Receive({QCanBusFrame(0x7E8, QByteArray("\x01"))});
  EXPECT_THAT(frames, IsEmpty()) << "frames are delivered from the event loop";
  RunQueuedEvents();
  EXPECT_THAT(frames, ElementsAre(CanFrame({0x7E8, false}, std::array<std::uint8_t, 1>{1})));
}

TEST_F(QtCanBusTest, SentIsSaidOfEachFrame) {
  bus->Send(kFrame);
  bus->Send(kFrame);
  bus->Send(kFrame);
  device->Confirm(1);
  EXPECT_EQ(sent, 1);
  device->Confirm(2);
  EXPECT_EQ(sent, 3);
}

TEST_F(QtCanBusTest, FramesAreTakenOnceTheConnectionStands) {
  device->ChangeState(QCanBusDevice::ConnectingState);
  EXPECT_FALSE(bus->Send(kFrame));
  EXPECT_FALSE(bus->IsReady());
  EXPECT_THAT(device->written, IsEmpty());
  device->ChangeState(QCanBusDevice::ConnectedState);
  EXPECT_TRUE(bus->Send(kFrame));
  EXPECT_THAT(device->written, SizeIs(1));
  EXPECT_TRUE(bus->IsReady());
  EXPECT_EQ(recovered, 0) << "from inside the device's signal";
  RunQueuedEvents();
  EXPECT_EQ(recovered, 1);
}

TEST_F(QtCanBusTest, ConnectionThatNeverComesAboutIsALoss) {
  OpenWatched({});
  device->ChangeState(QCanBusDevice::ConnectingState);
  ASSERT_TRUE(RunUntil([&] { return !errors.empty(); }));
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kUnplugged));
  EXPECT_THAT(error_text, HasSubstr("it does not connect"));
}

TEST_F(QtCanBusTest, ConnectionThatEndsWithoutAnErrorIsALoss) {
  device->ChangeState(QCanBusDevice::UnconnectedState);
  RunQueuedEvents();
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kUnplugged));
}

TEST_F(QtCanBusTest, InterfaceThatGoesIsALossForWhoeverOnlyListens) {
  QtCanBus::State state = QtCanBus::State::kOn;
  OpenWatched([&state] { return state; });
  ASSERT_TRUE(RunUntil([&] { return recovered > 0; }));
  state = QtCanBus::State::kGone;
  ASSERT_TRUE(RunUntil([&] { return !errors.empty(); }));
  RunQueuedEvents();
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kUnplugged)) << "once";
  EXPECT_THAT(error_text, HasSubstr("gone or down"));
}

TEST_F(QtCanBusTest, BusThatIsOffWhenItIsOpenedIsNotReadyUntilTheControllerReturns) {
  QtCanBus::State state = QtCanBus::State::kBusOff;
  OpenWatched([&state] { return state; });
  EXPECT_FALSE(bus->IsReady());
  ASSERT_TRUE(RunUntil([&] { return !errors.empty(); }));
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kBusOff));
  EXPECT_EQ(recovered, 0);
  state = QtCanBus::State::kOn;
  EXPECT_TRUE(bus->IsReady());
  ASSERT_TRUE(RunUntil([&] { return recovered > 0; }));
  EXPECT_THAT(errors, SizeIs(1));
}

TEST_F(QtCanBusTest, HandlerThatWaitsHidesNoFrame) {
  CanBus::Events events;
  bool inner = false;
  events.on_frame = [&](const CanFrame& frame) {
    frames.push_back(frame);
    if (frames.size() > 1) return;
    device->Receive({QCanBusFrame(2, {}), QCanBusFrame(3, {})});
    inner = RunUntil([&] { return frames.size() == 3; });
  };
  bus->SetEvents(std::move(events));
  device->Receive({QCanBusFrame(1, {})});
  ASSERT_TRUE(RunUntil([&] { return frames.size() == 3; }));
  EXPECT_TRUE(inner);
  EXPECT_EQ(frames[2].identifier.number, 3U);
}

TEST_F(QtCanBusTest, RemoteAndFlexibleDataRateFramesAreOthers) {
  QCanBusFrame flexible(1, QByteArray(12, 'x'));
  QCanBusFrame remote(QCanBusFrame::RemoteRequestFrame);
  device->Receive({flexible, remote});
  RunQueuedEvents();
  EXPECT_THAT(frames, IsEmpty());
}

TEST_F(QtCanBusTest, ErrorFramesSayBusOffNoAcknowledgeAndRestart) {
  device->ReceiveError(QCanBusFrame::BusOffError);
  RunQueuedEvents();
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kBusOff));
  EXPECT_THAT(error_text, HasSubstr("CAN interface can0 (fake): the controller is bus off"));
  device->ReceiveError(QCanBusFrame::ControllerRestartError);
  RunQueuedEvents();
  EXPECT_EQ(recovered, 1);
  device->ReceiveError(QCanBusFrame::MissingAcknowledgmentError);
  device->ReceiveError(QCanBusFrame::LostArbitrationError);
  RunQueuedEvents();
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kBusOff, CanBus::Error::kNoAcknowledge));
  EXPECT_THAT(error_text, HasSubstr("nobody acknowledges"));
  EXPECT_THAT(frames, IsEmpty());
}

TEST_F(QtCanBusTest, LostAdapterIsSaidFromTheEventLoop) {
  device->Fail(QCanBusDevice::ReadError);
  EXPECT_THAT(errors, IsEmpty());
  RunQueuedEvents();
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kUnplugged));
  EXPECT_THAT(error_text, HasSubstr("network is down"));
}

TEST_F(QtCanBusTest, FrameThatTheDriverHasNoRoomForIsNotTakenAndNoError) {
  for (const int refusal : {ENOBUFS, EAGAIN}) {
    device->refusal = refusal;
    EXPECT_FALSE(bus->Send(kFrame)) << refusal;
  }
  RunQueuedEvents();
  EXPECT_THAT(errors, IsEmpty());
  device->refusal = 0;
  EXPECT_TRUE(bus->Send(kFrame));
  device->Confirm(1);
  EXPECT_EQ(sent, 1);
}

TEST_F(QtCanBusTest, FrameThatIsRefusedForAnotherReasonMeansThatTheAdapterIsLost) {
  device->refusal = ENXIO;
  bus->Send(kFrame);
  bus->Send(kFrame);
  EXPECT_THAT(errors, IsEmpty());
  RunQueuedEvents();
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kUnplugged)) << "once";
  EXPECT_THAT(error_text, HasSubstr(qt_error_string(ENXIO).toStdString()));
}

TEST_F(QtCanBusTest, FrameThatAnAdapterDropsLaterIsNotWaitedFor) {
  bus->Send(kFrame);
  device->Fail(QCanBusDevice::WriteError);
  EXPECT_THAT(errors, ElementsAre(CanBus::Error::kQueueFull));
  for (std::size_t i = 0; i < QtCanBus::kTransmitLimit; ++i) EXPECT_TRUE(bus->Send(kFrame));
}

TEST_F(QtCanBusTest, AdapterThatConfirmsNothingTakesNoMoreThanTheLimit) {
  for (std::size_t i = 0; i < QtCanBus::kTransmitLimit; ++i) EXPECT_TRUE(bus->Send(kFrame));
  EXPECT_FALSE(bus->Send(kFrame));
  EXPECT_THAT(device->written, SizeIs(QtCanBus::kTransmitLimit));
  device->Confirm(1);
  EXPECT_TRUE(bus->Send(kFrame));
}

TEST_F(QtCanBusTest, WhatCannotBeOpenedSaysWhatWhyAndWhatToDo) {
  const auto refusal = [](const char* plugin) {
    try {
      const QtCanBus opened(plugin, "nocan7", 250000);
      return std::string("opened");
    } catch (const base::Failure& failure) {
      return failure.Description();
    }
  };
  EXPECT_THAT(refusal("nosuchplugin"), HasSubstr("CAN interface nocan7 (nosuchplugin) cannot be opened: "));
  EXPECT_THAT(refusal("nosuchplugin"), HasSubstr("check the plugin's name"));
  EXPECT_THAT(refusal("socketcan"), HasSubstr("ip link set nocan7 up type can bitrate 250000"));
}

}  // namespace
}  // namespace korval::platform
