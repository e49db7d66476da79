// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/SocketCanInterface.h"
#include "tests/support/TempFolder.h"

namespace korval::platform {
namespace {

using State = SocketCanInterface::State;

class SocketCanInterfaceTest : public testing::Test {
 protected:
  SocketCanInterfaceTest() {
    folder.Write("ifindex", "7\n");
    folder.Write("carrier", "1\n");
  }
  SocketCanInterface Open() { return SocketCanInterface(QString::fromStdString(folder.Path())); }

  tests::TempFolder folder;
};

TEST_F(SocketCanInterfaceTest, CarrierIsMissingWhileTheControllerIsBusOff) {
  const SocketCanInterface interface = Open();
  EXPECT_EQ(interface.CurrentState(), State::kOn);
  folder.Write("carrier", "0\n");
  EXPECT_EQ(interface.CurrentState(), State::kBusOff);
  folder.Write("carrier", "1\n");
  EXPECT_EQ(interface.CurrentState(), State::kOn);
}

TEST_F(SocketCanInterfaceTest, InterfaceThatIsDownRefusesItsCarrier) {
  const SocketCanInterface interface = Open();
  folder.Write("carrier", "");
  EXPECT_EQ(interface.CurrentState(), State::kGone);
}

TEST_F(SocketCanInterfaceTest, InterfaceThatWasPutBackIsAnotherOne) {
  const SocketCanInterface interface = Open();
  folder.Write("ifindex", "8\n");
  EXPECT_EQ(interface.CurrentState(), State::kGone);
  EXPECT_EQ(Open().CurrentState(), State::kOn);
}

TEST_F(SocketCanInterfaceTest, InterfaceThatIsNotThereIsGone) {
  EXPECT_EQ(SocketCanInterface::Named("nocan7").CurrentState(), State::kGone);
}

TEST_F(SocketCanInterfaceTest, KernelsFilesAreReadAsTheyStand) {
  EXPECT_EQ(SocketCanInterface::Named("lo").CurrentState(), State::kOn);
}

}  // namespace
}  // namespace korval::platform
