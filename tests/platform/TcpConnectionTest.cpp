// SPDX-License-Identifier: MIT
#include <chrono>
#include <optional>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include "LoopbackClient.h"
#include "platform/TcpConnection.h"

namespace korval::platform {
namespace {

/// A connection and the client at its other end.
class TcpConnectionTest : public ::testing::Test {
 protected:
  TcpConnectionTest() {
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    EXPECT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), length), 0);
    EXPECT_EQ(::listen(listener, 1), 0);
    EXPECT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length), 0);
    client_.emplace(ntohs(address.sin_port));
    descriptor_ = ::accept(listener, nullptr, nullptr);
    ::close(listener);
    connection_.emplace(descriptor_);
  }

  int Option(int level, int option) const {
    int value = -1;
    socklen_t size = sizeof value;
    EXPECT_EQ(::getsockopt(descriptor_, level, option, &value, &size), 0);
    return value;
  }

  std::optional<LoopbackClient> client_;
  int descriptor_ = -1;
  std::optional<TcpConnection> connection_;
};

TEST_F(TcpConnectionTest, ADeadPeerIsNoticedWithin30Seconds) {
  EXPECT_NE(Option(SOL_SOCKET, SO_KEEPALIVE), 0);
  const int probing = Option(IPPROTO_TCP, TCP_KEEPIDLE) +
                      Option(IPPROTO_TCP, TCP_KEEPINTVL) * Option(IPPROTO_TCP, TCP_KEEPCNT);
  const int unacknowledged = Option(IPPROTO_TCP, TCP_USER_TIMEOUT) / 1000;
  EXPECT_GT(unacknowledged, 0);
  // Data that goes out just before the last probe begins the other wait.
  EXPECT_LT(probing + unacknowledged, 30);
}

TEST_F(TcpConnectionTest, APeerHasLeftOnceItSendsNothingMore) {
  EXPECT_FALSE(connection_->PeerHasLeft());
  client_->Send(base::ByteBuffer{0x01}.View());
  EXPECT_FALSE(connection_->PeerHasLeft());
  client_->FinishSending();
  EXPECT_TRUE(connection_->PeerHasLeft());
}

TEST_F(TcpConnectionTest, APeerHasLeftWithAReset) {
  client_->Abort();
  EXPECT_TRUE(connection_->PeerHasLeft());
}

}  // namespace
}  // namespace korval::platform
