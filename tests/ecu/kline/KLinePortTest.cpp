// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "KLineBench.h"
#include "tests/support/Await.h"
#include "tests/support/SessionInput.h"

namespace korval::ecu {
namespace {

struct Ports {
  std::vector<std::string> opened;
  std::shared_ptr<tests::ManualEventLoop> loop = std::make_shared<tests::ManualEventLoop>();
  std::shared_ptr<MemoryLine> line = std::make_shared<MemoryLine>(loop);
  SessionEnvironment environment;

  Ports() {
    environment.loop = loop;
    environment.open_kline_wire = [this](const std::string& device) {
      opened.push_back(device);
      return std::make_unique<MemoryWire>(line);
    };
  }
  std::string Open(const std::string& port) {
    try {
      const auto session = CreateSession(environment);
      tests::Await(session->SetPort(port));
      return "opened " + opened.back();
    } catch (const base::Failure& failure) {
      return std::to_string(failure.Number()) + " " + failure.Description();
    }
  }
};

TEST(KLinePortTest, SerialPortsAreKLines) {
  Ports ports;
  for (const char* port : {"COM3", "/dev/ttyUSB0", "/tmp/kline"}) {
    EXPECT_EQ(ports.Open(port), std::string("opened ") + port);
  }
}

TEST(KLinePortTest, UsbInterfaceIsFoundByTheProgram) {
  Ports ports;
  ports.environment.find_usb_port = [] { return std::string("/dev/ttyUSB7"); };
  EXPECT_EQ(ports.Open("NONE"), "opened /dev/ttyUSB7");
  ports.environment.find_usb_port = [] { return std::string(); };
  EXPECT_NE(ports.Open("NONE").find("1002 "), std::string::npos);
  EXPECT_NE(ports.Open("NONE").find("is not plugged in"), std::string::npos);
}

TEST(KLinePortTest, AdapterThatIsNotThereIs1002WithWhy) {
  Ports ports;
  ports.line->plugged = false;
  const std::string failure = ports.Open("COM3");
  EXPECT_EQ(failure.substr(0, 4), "1002");
  EXPECT_NE(failure.find("COM3: there is no such device; plug the adapter in"), std::string::npos) << failure;
}

TEST(KLinePortTest, FunctionOnCanAndCanFramesAreRefused) {
  KLineBench bench("Protocol='DiagOnCAN'");
  EXPECT_EQ(bench.NumberOf("2101"), "1002");
  pugi::xml_document frames;
  frames.load_string("<can><x i='0'><i>291</i><s><d>01</d></s></x></can>");
  try {
    tests::Await(bench.session->SendFrames(tests::FramesIn(frames)));
    FAIL() << "sent";
  } catch (const base::Failure& failure) {
    EXPECT_EQ(failure.Number(), 1001);
  }
  EXPECT_EQ(bench.TesterSaid(), "");
}

}  // namespace
}  // namespace korval::ecu
