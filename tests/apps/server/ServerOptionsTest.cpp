// SPDX-License-Identifier: MIT
#include <QDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ServerOptions.h"

namespace korval::apps {
namespace {

using ::testing::HasSubstr;

using Arguments = std::vector<std::string>;

TEST(ServerOptionsTest, NothingGivenLeavesTheStoredSettingsInForce) {
  const ServerOptions options = ReadServerOptions({});
  EXPECT_FALSE(options.headless);
  EXPECT_FALSE(options.debug);
  EXPECT_FALSE(options.dry_run_power);
  EXPECT_FALSE(options.real_time);
  EXPECT_FALSE(options.tcp_port.has_value());
  EXPECT_FALSE(options.serial_settings.has_value());
  EXPECT_FALSE(options.diag_port.has_value());
  EXPECT_FALSE(options.listen.has_value());
  EXPECT_FALSE(options.allow.has_value());
}

TEST(ServerOptionsTest, EveryOptionIsRead) {
  const ServerOptions options = ReadServerOptions({"--headless",
                                                   "--tcp-port",
                                                   "0",
                                                   "--listen",
                                                   "127.0.0.1",
                                                   "--serial-port",
                                                   "3",
                                                   "--serial-device",
                                                   "/dev/pts/7",
                                                   "--serial-settings",
                                                   "9600,n,8,1",
                                                   "--handshaking",
                                                   "2",
                                                   "--open-serial",
                                                   "--asap-folder",
                                                   "/srv//asap/",
                                                   "--korv-folder",
                                                   "ecu/../k",
                                                   "--diag-port",
                                                   "",
                                                   "--settings",
                                                   "s.ini",
                                                   "--install-record",
                                                   "i.ini",
                                                   "--debug",
                                                   "--realtime",
                                                   "--power",
                                                   "dry-run",
                                                   "--allow",
                                                   "127.0.0.1",
                                                   "--allow",
                                                   "10.0.0.0/8"});
  EXPECT_TRUE(options.headless);
  EXPECT_EQ(options.tcp_port, std::uint16_t{0});
  EXPECT_EQ(options.listen, "127.0.0.1");
  EXPECT_EQ(options.serial_port, 3);
  EXPECT_EQ(options.serial_device, "/dev/pts/7");
  EXPECT_EQ(options.serial_settings, "9600,n,8,1");
  EXPECT_EQ(options.handshaking, 2);
  EXPECT_TRUE(options.open_serial);
  EXPECT_EQ(options.asap_folder, "/srv/asap");
  EXPECT_EQ(options.korv_folder, QDir::current().filePath("k").toStdString());
  EXPECT_EQ(options.diag_port, "");
  EXPECT_EQ(options.settings_file, "s.ini");
  EXPECT_EQ(options.install_record_file, "i.ini");
  EXPECT_TRUE(options.debug);
  EXPECT_TRUE(options.dry_run_power);
  EXPECT_TRUE(options.real_time);
  EXPECT_EQ(options.allow, "127.0.0.1, 10.0.0.0/8");
}

struct WrongUsage {
  Arguments arguments;
  const char* said;
};

class WrongUsageTest : public ::testing::TestWithParam<WrongUsage> {};

TEST_P(WrongUsageTest, IsRefusedWithWhatTheOptionTakes) {
  try {
    ReadServerOptions(GetParam().arguments);
    FAIL() << "accepted";
  } catch (const UsageError& error) {
    EXPECT_THAT(error.what(), HasSubstr(GetParam().said));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WrongUsageTest,
    ::testing::Values(
        WrongUsage{{"--tcp-port", "65536"}, "--tcp-port takes a port from 0 to 65535, not '65536'"},
        WrongUsage{{"--tcp-port", "-1"}, "--tcp-port takes"},
        WrongUsage{{"--tcp-port", "http"}, "not 'http'"}, WrongUsage{{"--tcp-port"}, "tcp-port"},
        WrongUsage{{"--listen", "bench"}, "--listen takes an IP address"},
        WrongUsage{{"--listen", ""}, "--listen takes an IP address"},
        WrongUsage{{"--allow", "10.0.0.0/99"}, "--allow takes"},
        WrongUsage{{"--allow", "192.168.4"}, "--allow takes"}, WrongUsage{{"--allow", ""}, "--allow takes"},
        WrongUsage{{"--serial-port", "0"}, "--serial-port takes"},
        WrongUsage{{"--handshaking", "4"}, "--handshaking takes a code from 0 to 3"},
        WrongUsage{{"--power", "off"}, "--power takes 'system' or 'dry-run'"},
        WrongUsage{{"--headles"}, "headles"},
        WrongUsage{{"engine.xml"}, "unexpected argument 'engine.xml'"}));

TEST(ServerOptionsTest, TheHelpNamesEveryOption) {
  const std::string help = ServerHelp();
  for (const char* option :
       {"--headless", "--tcp-port", "--listen", "--serial-port", "--serial-device", "--serial-settings",
        "--handshaking", "--open-serial", "--asap-folder", "--korv-folder", "--diag-port", "--settings",
        "--install-record", "--debug", "--realtime", "--power", "--allow", "--version", "--help"}) {
    EXPECT_THAT(help, HasSubstr(option));
  }
}

}  // namespace
}  // namespace korval::apps
