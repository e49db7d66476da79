// SPDX-License-Identifier: MIT
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "host/settings/ServerSettings.h"
#include "tests/support/MemorySettings.h"

namespace korval::host {
namespace {

constexpr char kOwnFolder[] = "/opt/korval";

ServerSettings Stored(const std::string& key, const std::string& text) {
  tests::MemorySettings store;
  store.user["KorvalAsapServer/Properties/" + key] = text;
  return ReadServerSettings(store, kOwnFolder);
}

TEST(ServerSettings, StandOnDefaultsWhenNothingIsStored) {
  const ServerSettings settings = ReadServerSettings(tests::MemorySettings(), kOwnFolder);
  EXPECT_EQ(settings.serial_settings, "");
  EXPECT_EQ(settings.comm_port, 2);
  EXPECT_EQ(settings.handshaking, "");
  EXPECT_EQ(settings.asap_folder, kOwnFolder);
  EXPECT_EQ(settings.korv_folder, kOwnFolder);
  EXPECT_FALSE(settings.echo);
  EXPECT_EQ(settings.tcp_port, 1001);
  EXPECT_FALSE(settings.open_serial_at_start);
  EXPECT_EQ(settings.listen, "");
  EXPECT_EQ(settings.allow, "");
}

TEST(ServerSettings, AreReadFromTheSectionProperties) {
  tests::MemorySettings store;
  store.user = {{"KorvalAsapServer/Properties/Settings", "19200,e,7,2"},
                {"KorvalAsapServer/Properties/CommPort", "5"},
                {"KorvalAsapServer/Properties/Handshaking", "3"},
                {"KorvalAsapServer/Properties/AsapFolder", "/srv/asap"},
                {"KorvalAsapServer/Properties/KorvFolder", "/srv/ecu"},
                {"KorvalAsapServer/Properties/Echo", "-1"},
                {"KorvalAsapServer/Properties/tcpipPort", "1002"},
                {"KorvalAsapServer/Properties/comAutoStart", "-1"},
                {"KorvalAsapServer/Properties/Listen", "192.168.4.10"},
                {"KorvalAsapServer/Properties/Allow", "192.168.4.0/24,127.0.0.1"}};
  const ServerSettings expected{"19200,e,7,2", 5,    "3",  "/srv/asap",    "/srv/ecu",
                                true,          1002, true, "192.168.4.10", "192.168.4.0/24,127.0.0.1"};
  EXPECT_EQ(ReadServerSettings(store, kOwnFolder), expected);
}

TEST(ServerSettings, TakePort2ForAnEmptyCommPort) { EXPECT_EQ(Stored("CommPort", "").comm_port, 2); }

TEST(ServerSettings, LeaveThePortNumberForACommPortThatIsNoNumber) {
  EXPECT_EQ(Stored("CommPort", "COM3").comm_port, std::nullopt);
}

TEST(ServerSettings, LeaveThePortNumberForACommPortOfMoreThan16Bits) {
  EXPECT_EQ(Stored("CommPort", "32767").comm_port, 32767);
  EXPECT_EQ(Stored("CommPort", "32768").comm_port, std::nullopt);
  EXPECT_EQ(Stored("CommPort", "-32769").comm_port, std::nullopt);
}

TEST(ServerSettings, Leave1001ForATcpPortThatIsNoPort) {
  for (const char* text : {"", "abc", "0", "-1", "65536", "99999999999999", "10o1", "1002.5"}) {
    EXPECT_EQ(Stored("tcpipPort", text).tcp_port, 1001) << text;
  }
}

TEST(ServerSettings, TakeEveryTcpPort) {
  EXPECT_EQ(Stored("tcpipPort", "1").tcp_port, 1);
  EXPECT_EQ(Stored("tcpipPort", "65535").tcp_port, 65535);
}

TEST(ServerSettings, OpenTheSerialPortForEveryTextButZero) {
  EXPECT_FALSE(Stored("comAutoStart", "0").open_serial_at_start);
  for (const char* text : {"-1", "1", "False", "", "00", " 0"}) {
    EXPECT_TRUE(Stored("comAutoStart", text).open_serial_at_start) << text;
  }
}

TEST(ServerSettings, TakeAnEchoThatIsNoBooleanForFalse) {
  for (const char* text : {"", "0", "False", "false", "yes", "on"})
    EXPECT_FALSE(Stored("Echo", text).echo) << text;
  for (const char* text : {"-1", "1", "True", "true"}) EXPECT_TRUE(Stored("Echo", text).echo) << text;
}

TEST(ServerSettings, AreSavedAsTextInThePanelsOrder) {
  tests::MemorySettings store;
  SaveServerSettings(store, {"9600,E,8,1", 3, "2", "/srv/asap", "/srv/ecu", true, 1003, true, "", ""});
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"KorvalAsapServer/Properties/Settings", "9600,E,8,1"},
      {"KorvalAsapServer/Properties/CommPort", "3"},
      {"KorvalAsapServer/Properties/Handshaking", "2"},
      {"KorvalAsapServer/Properties/AsapFolder", "/srv/asap"},
      {"KorvalAsapServer/Properties/KorvFolder", "/srv/ecu"},
      {"KorvalAsapServer/Properties/comAutoStart", "-1"},
      {"KorvalAsapServer/Properties/tcpipPort", "1003"}};
  EXPECT_EQ(store.written, expected);
}

TEST(ServerSettings, LetOnlyThisMachineInWhenNobodyKnowsWhomTheyKeepOut) {
  tests::MemorySettings store;
  store.readable = false;
  EXPECT_EQ(ReadServerSettings(store, kOwnFolder).allow, "127.0.0.0/8, ::1");
}

TEST(ServerSettings, SaveWhereToListenAndWhomToLetInWhenTheyChange) {
  tests::MemorySettings store;
  store.user = {{"KorvalAsapServer/Properties/Listen", "127.0.0.1"},
                {"KorvalAsapServer/Properties/Allow", "192.168.4.0/24"}};
  ServerSettings settings = ReadServerSettings(store, kOwnFolder);
  settings.allow = "192.168.4.0/24, 127.0.0.1";
  SaveServerSettings(store, settings);
  EXPECT_EQ(store.written.back().first, "KorvalAsapServer/Properties/Allow");
  EXPECT_EQ(ReadServerSettings(store, kOwnFolder).allow, "192.168.4.0/24, 127.0.0.1");
  settings.listen.clear();
  settings.allow.clear();
  SaveServerSettings(store, settings);
  EXPECT_EQ(store.user.at("KorvalAsapServer/Properties/Listen"), "");
  EXPECT_EQ(store.user.at("KorvalAsapServer/Properties/Allow"), "");
}

TEST(ServerSettings, SaveNoAutoOpenAsZero) {
  tests::MemorySettings store;
  SaveServerSettings(store, {});
  EXPECT_EQ(store.user.at("KorvalAsapServer/Properties/comAutoStart"), "0");
}

TEST(ServerSettings, AreSavedAsFarAsTheyCanBe) {
  tests::MemorySettings store;
  store.refused = {"KorvalAsapServer/Properties/CommPort"};
  EXPECT_THROW(SaveServerSettings(store, {"9600,E,8,1", 3, "2", "", "", false, 1003, false, "", ""}),
               base::Failure);
  EXPECT_EQ(store.user.at("KorvalAsapServer/Properties/Settings"), "9600,E,8,1");
  EXPECT_EQ(store.user.at("KorvalAsapServer/Properties/tcpipPort"), "1003");
}

}  // namespace
}  // namespace korval::host
