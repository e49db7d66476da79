// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "platform/TcpAccess.h"

namespace korval::platform {
namespace {

using ::testing::HasSubstr;

std::string Refusal(const std::string& listen, const std::string& allow) {
  try {
    ReadTcpAccess(listen, allow);
  } catch (const base::Failure& failure) {
    return failure.Description();
  }
  return "taken";
}

TEST(TcpAccess, WithoutTextsItListensEverywhereAndLetsEverybodyIn) {
  for (const char* nothing : {"", "  "}) {
    const TcpAccess access = ReadTcpAccess(nothing, nothing);
    EXPECT_EQ(access.address, QHostAddress(QHostAddress::Any));
    EXPECT_TRUE(access.LetsIn(QHostAddress("203.0.113.9")));
    EXPECT_FALSE(access.Names(QHostAddress("203.0.113.9")));
  }
}

TEST(TcpAccess, ListensOnOneAddress) {
  EXPECT_EQ(ReadTcpAccess(" 192.168.4.10 ", "").address, QHostAddress("192.168.4.10"));
  EXPECT_EQ(ReadTcpAccess("::1", "").address, QHostAddress("::1"));
}

TEST(TcpAccess, LetsInTheAddressesAndNetworksListedAndNoOther) {
  const TcpAccess access = ReadTcpAccess("", "192.168.4.0/24,127.0.0.1 , 10.1.2.77/8, fd00::/8");
  for (const char* client : {"192.168.4.0", "192.168.4.255", "127.0.0.1", "10.200.0.1", "fd12::1"}) {
    EXPECT_TRUE(access.LetsIn(QHostAddress(client))) << client;
    EXPECT_TRUE(access.Names(QHostAddress(client))) << client;
  }
  for (const char* client : {"192.168.5.1", "127.0.0.2", "11.0.0.1", "fe80::1", "::1"}) {
    EXPECT_FALSE(access.LetsIn(QHostAddress(client))) << client;
  }
}

TEST(TcpAccess, ZeroBitsNameEveryAddressOfTheirKind) {
  const TcpAccess access = ReadTcpAccess("", "0.0.0.0/0");
  EXPECT_TRUE(access.Names(QHostAddress("203.0.113.9")));
  EXPECT_FALSE(access.LetsIn(QHostAddress("fd12::1")));
}

TEST(TcpAccess, TrustsAClientOfThisMachineAndOneThatIsListed) {
  const QHostAddress own("192.168.4.10");
  const TcpAccess everybody = ReadTcpAccess("", "");
  for (const char* client : {"127.0.0.1", "127.9.9.9", "::1", "192.168.4.10"}) {
    EXPECT_TRUE(everybody.Trusts(QHostAddress(client), own)) << client;
  }
  for (const char* client : {"192.168.4.9", "203.0.113.9", "fe80::1"}) {
    EXPECT_FALSE(everybody.Trusts(QHostAddress(client), own)) << client;
  }
  EXPECT_TRUE(ReadTcpAccess("", "192.168.4.9").Trusts(QHostAddress("192.168.4.9"), own));
  EXPECT_FALSE(ReadTcpAccess("", "192.168.4.9").Trusts(QHostAddress("192.168.4.8"), own));
}

TEST(TcpAccess, AMistypedListIsRefusedWithItsBadPart) {
  for (const char* part : {"192.168.4", "192.168.4/24", "10", "192.168.4.0/33", "192.168.4.0/-1",
                           "192.168.4.0/", "192.168.4.0/24/8", "192.168.4.0/255.255.255.0", "192.168.4.256",
                           "bench", "fd00::/129", "/24", "*", "127.0.0.1 10.0.0.1", "127.0.0.1; 10.0.0.1"}) {
    EXPECT_THAT(Refusal("", part),
                HasSubstr("'" + std::string(part) + "' is no IP address of allowed clients"));
    EXPECT_THAT(Refusal("", "127.0.0.1, " + std::string(part)),
                HasSubstr("'" + std::string(part) + "' is no"));
  }
  for (const char* list : {",", "127.0.0.1,", ",127.0.0.1", "127.0.0.1,,10.0.0.1"}) {
    EXPECT_THAT(Refusal("", list), HasSubstr("'' is no IP address of allowed clients")) << list;
  }
}

TEST(TcpAccess, AMistypedListenAddressIsRefused) {
  for (const char* listen : {"192.168.4", "bench", "192.168.4.0/24", "127.0.0.1, 10.0.0.1"}) {
    EXPECT_THAT(Refusal(listen, ""),
                HasSubstr("'" + std::string(listen) + "' is no IP address to listen on"));
  }
}

}  // namespace
}  // namespace korval::platform
