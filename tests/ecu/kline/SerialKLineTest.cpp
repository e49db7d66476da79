// SPDX-License-Identifier: MIT
// A session over a pseudo terminal, with the simulated ECU at its far end: the adapter, the session and the
// ECU on Qt's event loop.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "KLineBench.h"
#include "PseudoTerminal.h"
#include "QtTest.h"
#include "platform/SerialKLineWire.h"
#include "platform/serial/SerialDevice.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"
#include "tests/support/TempFolder.h"
#include "tests/support/WaitingQtLoop.h"

namespace korval::platform {
namespace {

constexpr char kQuick[] = "TIdleMs='1' TIniLMs='1' TWupMs='2' P2MinMs='1' P2Ms='2000' P3Ms='1' P4Ms='0'";

class SerialKLineTest : public QtTest {
 protected:
  SerialKLineTest() { Plug(); }

  // A device under the name that stays the same.
  void Plug() {
    line_ = std::make_unique<PseudoTerminal>();
    seen_ = 0;
    std::filesystem::remove(device_);
    std::filesystem::create_symlink(line_->Device(), device_);
  }

  void Start(const std::string& function) {
    text_ = ecu::KLineBench::FileText(function, ecu::KLineBench::kUsualSimulation);
    description_ = ecu::ReadEcuFile(ecu::KLineBench::Parse(text_));
    ecu_ = std::make_unique<ecu::KLineEcu>(
        shared_loop_, description_->Function(),
        std::make_shared<ecu::SimulatedEcu>(description_, shared_loop_->Now()),
        [this](base::ByteView bytes) { line_->Send(bytes); });
    poll_ = shared_loop_->CreateTimer([this] { Poll(); });
    Poll();
    ecu::SessionEnvironment environment;
    environment.loop = shared_loop_;
    environment.open_kline_wire = [this](const std::string& device) {
      return std::make_unique<SerialKLineWire>(
          device, [this](const std::string& sentence) { reports_.push_back(sentence); });
    };
    session_ = ecu::CreateSession(environment);
    tests::Await(*shared_loop_, session_->SetPort(device_));
    session_->OfferEcuFile(tests::EcuFileOf("engine.xml", ecu::KLineBench::Parse(text_)));
  }

  std::string Send(const std::string& request) {
    try {
      base::ByteBuffer answer;
      tests::Await(*shared_loop_,
                   session_->EcuByFunction("ENGINE")->Send(base::ByteBuffer::FromHex(request), answer));
      return answer.ToHex();
    } catch (const base::Failure& failure) {
      return std::to_string(failure.Number()) + " " + failure.Description();
    }
  }

  tests::TempFolder folder_;
  std::string device_ = folder_.Path() + "/kline";
  std::unique_ptr<PseudoTerminal> line_;
  std::shared_ptr<tests::WaitingQtLoop> shared_loop_ = std::make_shared<tests::WaitingQtLoop>();
  std::shared_ptr<viator3::Session> session_;
  std::vector<std::string> reports_;

 private:
  void Poll() {
    poll_->Start(std::chrono::milliseconds(1));
    const base::ByteBuffer& received = line_->Received();
    if (received.Length() == seen_) return;
    const base::ByteBuffer fresh(received.View(seen_, received.Length() - seen_));
    seen_ = received.Length();
    ecu_->BytesArrived(fresh.View());
  }

  std::string text_;
  std::shared_ptr<const ecu::EcuDescription> description_;
  std::unique_ptr<ecu::KLineEcu> ecu_;
  std::unique_ptr<base::Timer> poll_;
  std::size_t seen_ = 0;
};

TEST_F(SerialKLineTest, FastInitialisationThenRequests) {
  Start(kQuick);
  for (int request = 0; request < 20; ++request) EXPECT_EQ(Send("2101"), "61010C808202");
  EXPECT_TRUE(reports_.empty()) << reports_.front();
}

TEST_F(SerialKLineTest, FiveBaudAddressGoesAsOneByteWhereThereIsNoBreak) {
  Start(std::string(kQuick) + " Init='slow' InitAddress='33' W2Ms='2000' W3Ms='2000' W4MaxMs='2000'");
  EXPECT_EQ(Send("2101"), "61010C808202");
  EXPECT_EQ(line_->Received().At(0), 0x33);
}

TEST_F(SerialKLineTest, LineRunsAtTheSpeedOfTheFile) {
  Start(std::string(kQuick) + " Baud='9600'");
  EXPECT_EQ(Send("2101"), "61010C808202");
  const termios settings = line_->Settings();
  EXPECT_EQ(::cfgetospeed(&settings), static_cast<speed_t>(B9600));
}

TEST_F(SerialKLineTest, UnpluggedIsLostAndPluggedInAgainItServes) {
  Start(kQuick);
  EXPECT_EQ(Send("2101"), "61010C808202");
  const auto timer = shared_loop_->CreateTimer([this] { line_->Unplug(); });
  timer->Start(std::chrono::microseconds(0));
  std::string failure;
  ASSERT_TRUE(RunUntil([&] {
    failure = Send("2101");
    return failure.substr(0, 4) != "6101";
  }));
  EXPECT_EQ(failure.substr(0, 4), "1000") << failure;
  Plug();
  EXPECT_EQ(Send("2101"), "61010C808202");
}

TEST_F(SerialKLineTest, DeviceThatIsNotThereIsRefusedWithWhatToDo) {
  std::filesystem::remove(device_);
  try {
    Start(kQuick);
    FAIL() << "opened";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), 1002);
    EXPECT_NE(failure.Description().find(device_), std::string::npos) << failure.Description();
    EXPECT_NE(failure.Description().find("plug the adapter in"), std::string::npos) << failure.Description();
  }
}

TEST(SerialDeviceTest, PortsByNumberAndByPath) {
  EXPECT_EQ(SerialDevice("COM3"), "/dev/ttyS2");
  EXPECT_EQ(SerialDevice("/dev/ttyUSB0"), "/dev/ttyUSB0");
  EXPECT_EQ(SerialDevice("COM"), "COM");
  EXPECT_EQ(SerialDevice("COM0"), "COM0");
}

}  // namespace
}  // namespace korval::platform
