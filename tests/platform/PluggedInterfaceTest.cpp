// SPDX-License-Identifier: MIT
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/PluggedInterface.h"
#include "tests/support/TempFolder.h"

namespace korval::platform {
namespace {

using ::testing::Contains;
using ::testing::Field;
using ::testing::Not;
using ::testing::StartsWith;

// The network interfaces of a computer as its system shows them in files.
class PluggedInterfaceTest : public ::testing::Test {
 protected:
  void AddInterface(const std::string& name, const std::string& type) const {
    std::filesystem::create_directories(folder_.Path("net/" + name));
    folder_.Write("net/" + name + "/type", type + "\n");
  }
  // An interface's device is one of the functions of the USB device.
  void PlugIntoUsb(const std::string& name, const std::string& product, const std::string& serial) const {
    std::filesystem::create_directories(folder_.Path("usb/1-1/1-1:1.0"));
    folder_.Write("usb/1-1/product", product + "\n");
    folder_.Write("usb/1-1/serial", serial + "\n");
    std::filesystem::create_directory_symlink(folder_.Path("usb/1-1/1-1:1.0"),
                                              folder_.Path("net/" + name + "/device"));
  }
  std::vector<PluggedInterface> Scan() const {
    return ScanInterfaces(QString::fromStdString(folder_.Path()));
  }

  tests::TempFolder folder_;
};

TEST_F(PluggedInterfaceTest, ACanInterfaceHasTheSerialNumberOfItsUsbDevice) {
  AddInterface("can0", "280");
  PlugIntoUsb("can0", "CAN adapter", "KD-20417");
  EXPECT_THAT(Scan(), Contains(PluggedInterface{"CAN:socketcan:can0", "CAN adapter", "KD-20417"}));
}

TEST_F(PluggedInterfaceTest, ACanInterfaceWithoutADeviceHasNeitherNameNorSerialNumber) {
  AddInterface("vcan0", "280");
  EXPECT_THAT(Scan(), Contains(PluggedInterface{"CAN:socketcan:vcan0", "", ""}));
}

TEST_F(PluggedInterfaceTest, ThoseWithASerialNumberAreFoundAlone) {
  AddInterface("can0", "280");
  AddInterface("vcan0", "280");
  PlugIntoUsb("can0", "CAN adapter", "KD-20417");
  std::filesystem::create_directories(folder_.Path("tty/ttyS0"));
  EXPECT_THAT(ScanNumberedInterfaces(QString::fromStdString(folder_.Path())),
              ::testing::ElementsAre(PluggedInterface{"CAN:socketcan:can0", "CAN adapter", "KD-20417"}));
}

TEST_F(PluggedInterfaceTest, OtherNetworkInterfacesAreLeftOut) {
  AddInterface("eth0", "1");
  AddInterface("can1", "280");
  std::filesystem::create_directories(folder_.Path("net/broken"));
  EXPECT_THAT(Scan(), Not(Contains(Field(&PluggedInterface::port, "CAN:socketcan:eth0"))));
  EXPECT_THAT(Scan(), Not(Contains(Field(&PluggedInterface::port, "CAN:socketcan:broken"))));
}

TEST_F(PluggedInterfaceTest, CanInterfacesStandInTheOrderOfTheirNames) {
  for (const char* name : {"can2", "can0", "can1"}) AddInterface(name, "280");
  std::vector<std::string> ports;
  for (const auto& found : Scan()) {
    if (found.port.starts_with("CAN:")) ports.push_back(found.port);
  }
  EXPECT_THAT(ports,
              ::testing::ElementsAre("CAN:socketcan:can0", "CAN:socketcan:can1", "CAN:socketcan:can2"));
}

TEST_F(PluggedInterfaceTest, AComputerWithoutANetworkFolderHasNoCanInterface) {
  EXPECT_THAT(ScanInterfaces(QString::fromStdString(folder_.Path("absent"))),
              Not(Contains(Field(&PluggedInterface::port, StartsWith("CAN:")))));
}

TEST_F(PluggedInterfaceTest, ADeviceIsLeftOutUnderEveryNameItGoesBy) {
  const std::vector<PluggedInterface> plugged{
      {"/dev/null", "", "KD-1"}, {"/dev/zero", "", "KD-2"}, {"CAN:socketcan:can0", "", "KD-3"}};
  const std::vector<PluggedInterface> others{plugged[1], plugged[2]};
  std::filesystem::create_symlink("/dev/null", folder_.Path("bench"));
  EXPECT_EQ(WithoutDevice(plugged, "/dev/null"), others);
  EXPECT_EQ(WithoutDevice(plugged, folder_.Path("bench")), others);
  EXPECT_EQ(WithoutDevice(plugged, folder_.Path("absent")), plugged);
  EXPECT_EQ(WithoutDevice(plugged, ""), plugged);
}

TEST_F(PluggedInterfaceTest, TheNamesChangeWithEveryInterface) {
  const auto names = [this] { return InterfaceNames(QString::fromStdString(folder_.Path())); };
  const QStringList before = names();
  AddInterface("can0", "280");
  const QStringList with_can = names();
  std::filesystem::create_directories(folder_.Path("tty/ttyUSB0"));
  EXPECT_NE(before, with_can);
  EXPECT_NE(with_can, names());
}

}  // namespace
}  // namespace korval::platform
