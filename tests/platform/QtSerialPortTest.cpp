// SPDX-License-Identifier: MIT
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "PseudoTerminal.h"
#include "QtTest.h"
#include "base/Failure.h"
#include "platform/QtSerialPort.h"
#include "tests/support/TempFolder.h"

namespace korval::platform {
namespace {

using base::ByteBuffer;
using protocol::CommEvent;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr tcflag_t kXonXoff = IXON | IXOFF;

class QtSerialPortTest : public QtTest {
 protected:
  QtSerialPortTest() {
    Bind();
    Plug();
    port_->SetPortNumber(3);
    port_->SetDevice(3, device_);
  }

  /// Reads what each receive event stands for, and keeps every other event.
  void Bind() {
    port_->SetOnComm([this](CommEvent event) {
      if (event == CommEvent::kReceive) {
        received_.Append(port_->Read().View());
      } else {
        events_.push_back(event);
      }
    });
  }
  /// A device under the name that stays the same.
  void Plug() {
    line_ = std::make_unique<PseudoTerminal>();
    std::filesystem::remove(device_);
    std::filesystem::create_symlink(line_->Device(), device_);
  }
  speed_t Speed() const {
    const termios settings = line_->Settings();
    return ::cfgetospeed(&settings);
  }
  std::string OpenFailure() {
    try {
      port_->Open();
    } catch (const base::Failure& failure) {
      return failure.Description();
    }
    return "opened";
  }

  tests::TempFolder folder_;
  std::string device_ = folder_.Path("ttyBench");
  std::unique_ptr<PseudoTerminal> line_;
  std::vector<std::string> reports_;
  std::unique_ptr<QtSerialPort> port_ =
      std::make_unique<QtSerialPort>([this](const std::string& text) { reports_.push_back(text); });
  ByteBuffer received_;
  std::vector<CommEvent> events_;
};

TEST_F(QtSerialPortTest, CarriesEveryByteAsItIsInBothDirections) {
  ByteBuffer every_byte;
  for (int i = 0; i < 256; ++i) every_byte.Append(static_cast<std::uint8_t>(i));
  port_->Open();
  line_->Send(every_byte.View());
  EXPECT_TRUE(RunUntil([&] { return received_.Length() == 256; }));
  EXPECT_EQ(received_, every_byte);
  port_->Write(every_byte.View());
  EXPECT_TRUE(RunUntil([&] { return line_->Received().Length() == 256; }));
  EXPECT_EQ(line_->Received(), every_byte);
}

TEST_F(QtSerialPortTest, DeliversBytesWhileTheHandlerOfEarlierOnesWaits) {
  bool handler_ended = false;
  port_->SetOnComm([&](CommEvent) {
    const bool first = received_.Empty();
    received_.Append(port_->Read().View());
    if (!first) return;
    line_->Send(ByteBuffer{0x02}.View());
    EXPECT_TRUE(RunUntil([&] { return received_.Length() == 2; }));
    handler_ended = true;
  });
  port_->Open();
  line_->Send(ByteBuffer{0x01}.View());
  EXPECT_TRUE(RunUntil([&] { return handler_ended; }));
  EXPECT_EQ(received_, (ByteBuffer{0x01, 0x02}));
}

TEST_F(QtSerialPortTest, SetsSpeedAndStopBits) {
  port_->SetSettings("19200,n,8,2");
  port_->Open();
  EXPECT_EQ(Speed(), speed_t{B19200});
  EXPECT_NE(line_->Settings().c_cflag & CSTOPB, 0U);
  port_->SetSettings("9600,N,8,1");
  EXPECT_EQ(line_->Settings().c_cflag & CSTOPB, 0U);
  EXPECT_EQ(port_->Settings(), "9600,N,8,1");
}

TEST_F(QtSerialPortTest, TakesAnOddSpeed) {
  port_->SetSettings("10400,n,8,1");
  EXPECT_EQ(OpenFailure(), "opened");
}

TEST_F(QtSerialPortTest, SetsUpEachHandshaking) {
  port_->Open();
  const auto xon_xoff = [&] { return (line_->Settings().c_iflag & kXonXoff) == kXonXoff; };
  const auto rts = [&] { return (line_->Settings().c_cflag & CRTSCTS) != 0; };
  port_->SetHandshaking(1);
  EXPECT_TRUE(xon_xoff() && !rts());
  port_->SetHandshaking(2);
  EXPECT_TRUE(!xon_xoff() && rts());
  port_->SetHandshaking(3);
  EXPECT_TRUE(xon_xoff() && rts());
  port_->SetHandshaking(0);
  EXPECT_TRUE(!xon_xoff() && !rts());
}

TEST_F(QtSerialPortTest, AppliesAtOpeningWhatWasSetBefore) {
  port_->SetHandshaking(3);
  port_->SetSettings("4800,n,8,1");
  port_->Open();
  EXPECT_EQ(line_->Settings().c_iflag & kXonXoff, kXonXoff);
  EXPECT_EQ(Speed(), speed_t{B4800});
}

TEST_F(QtSerialPortTest, RefusesAHandshakingItDoesNotKnow) {
  EXPECT_THROW(port_->SetHandshaking(4), base::Failure);
  EXPECT_THROW(port_->SetHandshaking(-1), base::Failure);
  EXPECT_EQ(port_->Handshaking(), 0);
}

TEST_F(QtSerialPortTest, KeepsItsSettingsWhenItRefusesNewOnes) {
  EXPECT_THROW(port_->SetSettings("fast"), base::Failure);
  EXPECT_EQ(port_->Settings(), "9600,n,8,1");
}

TEST_F(QtSerialPortTest, SaysWhatTheHardwareCannotDo) {
  port_->SetSettings("9600,n,4,1");
  EXPECT_THAT(OpenFailure(),
              HasSubstr("COM3 (" + device_ + ") cannot be opened: this system's serial ports have no 4"));
  EXPECT_FALSE(port_->IsOpen());
  port_->SetSettings("9600,n,8,1.5");
  EXPECT_THAT(OpenFailure(), HasSubstr("1.5 stop bits go with 5 data bits only"));
  EXPECT_FALSE(port_->IsOpen());
}

TEST_F(QtSerialPortTest, SaysWhichDeviceIsMissing) {
  std::filesystem::remove(device_);
  EXPECT_THAT(OpenFailure(), HasSubstr("Serial port COM3 (" + device_ + ") cannot be opened: "));
  EXPECT_FALSE(port_->IsOpen());
}

TEST_F(QtSerialPortTest, RefusesADeviceThatSomebodyElseHasOpen) {
  QtSerialPort other([](const std::string&) {});
  other.SetPortNumber(1);
  other.SetDevice(1, device_);
  other.Open();
  EXPECT_THAT(OpenFailure(), HasSubstr("close the program that uses it"));
}

TEST_F(QtSerialPortTest, FindsTheDeviceOfEachNumber) {
  EXPECT_EQ(port_->Device(), device_);
  port_->SetPortNumber(4);
  EXPECT_EQ(port_->Device(), "/dev/ttyS3");
}

TEST_F(QtSerialPortTest, ReportsADeviceThatIsUnpluggedAndOpensItAgain) {
  port_->Open();
  line_->Unplug();
  EXPECT_TRUE(RunUntil([&] { return !events_.empty(); }));
  EXPECT_THAT(events_, ElementsAre(CommEvent::kDcbError));
  EXPECT_THAT(reports_,
              ElementsAre("Serial device " + device_ + " was lost: plug it in again, then open the port"));
  EXPECT_FALSE(port_->IsOpen());
  port_->Write(ByteBuffer{0x01}.View());  // goes nowhere

  Plug();
  port_->Open();
  line_->Send(ByteBuffer{0x07}.View());
  EXPECT_TRUE(RunUntil([&] { return received_.Length() == 1; }));
  EXPECT_EQ(events_.size(), 1U);
}

TEST_F(QtSerialPortTest, IsSilentAfterClosing) {
  port_->Open();
  line_->Send(ByteBuffer{0x01}.View());
  port_->Close();
  EXPECT_FALSE(port_->IsOpen());
  RunQueuedEvents();
  EXPECT_TRUE(received_.Empty());
  EXPECT_TRUE(port_->Read().Empty());
}

TEST_F(QtSerialPortTest, MayBeOpenedTwice) {
  port_->Open();
  EXPECT_EQ(OpenFailure(), "opened");
  EXPECT_TRUE(port_->IsOpen());
}

TEST_F(QtSerialPortTest, ReportsWhenTheFarEndTakesNothingAnyMore) {
  ByteBuffer much;
  much.SetLength(65536);
  port_->Open();
  for (int i = 0; i < 100 && events_.empty(); ++i) port_->Write(much.View());
  EXPECT_THAT(events_, ElementsAre(CommEvent::kTransmitBufferFull));
}

TEST_F(QtSerialPortTest, MayBeDestroyedInsideAReceiveEvent) {
  port_->SetOnComm([this](CommEvent) { port_.reset(); });
  port_->Open();
  line_->Send(ByteBuffer{0x01}.View());
  EXPECT_TRUE(RunUntil([&] { return port_ == nullptr; }));
}

TEST_F(QtSerialPortTest, MayBeDestroyedWhenTheDeviceIsLost) {
  port_->SetOnComm([this](CommEvent) { port_.reset(); });
  port_->Open();
  line_->Unplug();
  EXPECT_TRUE(RunUntil([&] { return port_ == nullptr; }));
}

}  // namespace
}  // namespace korval::platform
