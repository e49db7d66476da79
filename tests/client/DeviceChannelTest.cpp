// SPDX-License-Identifier: MIT
// Server and client on one thread: an answer can come only because the client's waiting runs the events.
#include <functional>
#include <string>

#include <QCoreApplication>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PseudoTerminal.h"
#include "client/ClientErrors.h"
#include "client/device/DeviceChannel.h"

namespace korval::client {
namespace {

using base::ByteBuffer;
using platform::PseudoTerminal;
using std::chrono::milliseconds;
using ::testing::HasSubstr;

constexpr milliseconds kLong{60000};
constexpr milliseconds kShort{50};
const ByteBuffer kRequest = ByteBuffer::FromHex("000600020008");
const std::string kReply = "000800020000000A";

QByteArray Bytes(const std::string& hex) {
  const ByteBuffer bytes = ByteBuffer::FromHex(hex);
  return {reinterpret_cast<const char*>(bytes.View().data()), static_cast<qsizetype>(bytes.Length())};
}

std::string FailureOf(const std::function<void()>& act) {
  try {
    act();
  } catch (const LinkError& error) {
    return error.Description();
  }
  return "no failure";
}

class QtApplication : public testing::Test {
 protected:
  int argument_count_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  QCoreApplication application_{argument_count_, arguments_};
};

class TcpChannelTest : public QtApplication {
 protected:
  /// Listens, and lets `serve` answer each arrival at the far end.
  std::unique_ptr<Channel> Connect(const std::function<void(QTcpSocket&)>& serve) {
    server_.listen(QHostAddress::LocalHost);
    QObject::connect(&server_, &QTcpServer::newConnection, [this, serve] {
      QTcpSocket* socket = server_.nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, [this, serve, socket] {
        received_ += socket->readAll().toHex().toUpper().toStdString();
        serve(*socket);
      });
    });
    return ConnectTcp("127.0.0.1", server_.serverPort(), kLong);
  }

  QTcpServer server_;
  std::string received_;
};

TEST_F(TcpChannelTest, SendsAndReceives) {
  const auto channel = Connect([](QTcpSocket& socket) { socket.write(Bytes(kReply)); });
  for (int i = 0; i < 3; ++i) {
    channel->Send(kRequest.View());
    EXPECT_EQ(channel->Receive(kLong).ToHex(), kReply);
  }
  EXPECT_EQ(received_, "000600020008000600020008000600020008");
}

TEST_F(TcpChannelTest, AnAnswerInPiecesIsPutTogether) {
  const auto channel = Connect([](QTcpSocket& socket) {
    socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    const QByteArray reply = Bytes(kReply);
    for (int i = 0; i < reply.size(); ++i) {
      QTimer::singleShot(i, &socket, [&socket, reply, i] {
        socket.write(reply.mid(i, 1));
        socket.flush();
      });
    }
  });
  channel->Send(kRequest.View());
  EXPECT_EQ(channel->Receive(kLong).ToHex(), kReply);
}

TEST_F(TcpChannelTest, TheLongestAnswerIsReceived) {
  std::string hex = "FFFE";
  for (int i = 2; i < 65534; ++i) hex += "5A";
  const auto channel = Connect([&hex](QTcpSocket& socket) { socket.write(Bytes(hex)); });
  channel->Send(kRequest.View());
  EXPECT_EQ(channel->Receive(kLong).ToHex(), hex);
}

TEST_F(TcpChannelTest, ALengthOfZeroEndsTheWait) {
  const auto channel = Connect([](QTcpSocket& socket) { socket.write(Bytes("0000")); });
  channel->Send(kRequest.View());
  EXPECT_EQ(channel->Receive(kLong).ToHex(), "0000");
}

TEST_F(TcpChannelTest, NoAnswerInTimeIsRaised) {
  const auto channel = Connect([](QTcpSocket&) {});
  channel->Send(kRequest.View());
  EXPECT_EQ(FailureOf([&] { channel->Receive(kShort); }), "No answer from the server within 50 ms");
}

TEST_F(TcpChannelTest, HalfAnAnswerInTimeIsRaised) {
  const auto channel = Connect([](QTcpSocket& socket) { socket.write(Bytes("00080002")); });
  channel->Send(kRequest.View());
  EXPECT_EQ(FailureOf([&] { channel->Receive(kShort); }), "No answer from the server within 50 ms");
}

TEST_F(TcpChannelTest, WhatIsLeftOfAnEarlierAnswerIsDropped) {
  const auto channel = Connect([this](QTcpSocket& socket) {
    socket.write(received_.size() == 12 ? Bytes("00080002") : Bytes(kReply));
  });
  channel->Send(kRequest.View());
  EXPECT_THROW(channel->Receive(kShort), LinkError);
  channel->Send(kRequest.View());
  EXPECT_EQ(channel->Receive(kLong).ToHex(), kReply);
}

TEST_F(TcpChannelTest, AServerThatClosesEndsTheWait) {
  const auto channel = Connect([](QTcpSocket& socket) { socket.close(); });
  channel->Send(kRequest.View());
  EXPECT_EQ(FailureOf([&] { channel->Receive(kLong); }), "The connection to the server is lost");
  channel->Send(kRequest.View());
  EXPECT_EQ(FailureOf([&] { channel->Receive(kLong); }), "The connection to the server is lost");
}

TEST_F(TcpChannelTest, AServerThatClosesInsideAnAnswerEndsTheWait) {
  const auto channel = Connect([](QTcpSocket& socket) {
    socket.write(Bytes("00080002"));
    socket.disconnectFromHost();
  });
  channel->Send(kRequest.View());
  EXPECT_EQ(FailureOf([&] { channel->Receive(kLong); }), "The connection to the server is lost");
}

TEST_F(TcpChannelTest, AServerThatClosesAfterAWholeAnswerHasAnswered) {
  const auto channel = Connect([](QTcpSocket& socket) {
    socket.write(Bytes(kReply));
    socket.disconnectFromHost();
  });
  channel->Send(kRequest.View());
  EXPECT_EQ(channel->Receive(kLong).ToHex(), kReply);
}

TEST_F(TcpChannelTest, NobodyThereIsRaisedWithAddressAndPort) {
  server_.listen(QHostAddress::LocalHost);
  const std::uint16_t port = server_.serverPort();
  server_.close();
  const std::string failure = FailureOf([&] { ConnectTcp("127.0.0.1", port, kLong); });
  EXPECT_THAT(failure, HasSubstr("No connection to 127.0.0.1 port " + std::to_string(port)));
  EXPECT_THAT(failure, HasSubstr("is the server running there?"));
}

class SerialChannelTest : public QtApplication {
 protected:
  /// Lets the far end act once for each `request` that has come whole.
  void Serve(const std::function<void()>& act) {
    QObject::connect(&far_end_, &QTimer::timeout, [this, act] {
      const std::size_t whole = line_.Received().Length() / kRequest.Length();
      if (whole == served_) return;
      served_ = whole;
      act();
    });
    far_end_.start(0);
  }

  PseudoTerminal line_;
  QTimer far_end_;
  std::size_t served_ = 0;
};

TEST_F(SerialChannelTest, SendsAndReceivesOverAPseudoTerminal) {
  const auto channel = OpenSerial(line_.Device(), {});
  Serve([this] { line_.Send(ByteBuffer::FromHex(kReply).View()); });
  for (int i = 0; i < 2; ++i) {
    channel->Send(kRequest.View());
    EXPECT_EQ(channel->Receive(kLong).ToHex(), kReply);
  }
  EXPECT_EQ(line_.Received().ToHex(), "000600020008000600020008");
}

TEST_F(SerialChannelTest, EveryByteValueTravelsUnchanged) {
  const auto channel = OpenSerial(line_.Device(), {});
  ByteBuffer answer = ByteBuffer::FromHex("0102");
  for (int byte = 0; byte < 256; ++byte) answer.Append(static_cast<std::uint8_t>(byte));
  Serve([&] { line_.Send(answer.View()); });
  channel->Send(kRequest.View());
  EXPECT_EQ(channel->Receive(kLong).ToHex(), answer.ToHex());
}

TEST_F(SerialChannelTest, TheSettingsReachTheLine) {
  // A pseudo terminal has neither parity nor other data bits than 8.
  const auto channel = OpenSerial(line_.Device(), base::ReadSerialSettings("19200,n,8,2"));
  const termios settings = line_.Settings();
  EXPECT_EQ(::cfgetospeed(&settings), static_cast<speed_t>(B19200));
  EXPECT_NE(settings.c_cflag & static_cast<tcflag_t>(CSTOPB), 0U);
}

TEST_F(SerialChannelTest, SettingsThatNoDriverKnowsAreRaised) {
  for (const char* const settings : {"9600,n,4,1", "9600,n,8,1.5"}) {
    const std::string failure =
        FailureOf([&] { OpenSerial(line_.Device(), base::ReadSerialSettings(settings)); });
    EXPECT_THAT(failure, HasSubstr(line_.Device() + " does not know these settings")) << settings;
  }
}

TEST_F(SerialChannelTest, NoAnswerInTimeIsRaised) {
  const auto channel = OpenSerial(line_.Device(), {});
  channel->Send(kRequest.View());
  EXPECT_EQ(FailureOf([&] { channel->Receive(kShort); }), "No answer from the server within 50 ms");
}

TEST_F(SerialChannelTest, ALineUnpluggedEndsTheWait) {
  const auto channel = OpenSerial(line_.Device(), {});
  Serve([this] {
    far_end_.stop();
    line_.Unplug();
  });
  channel->Send(kRequest.View());
  EXPECT_EQ(FailureOf([&] { channel->Receive(kLong); }), "The connection to the server is lost");
}

TEST_F(SerialChannelTest, ADeviceThatIsNotThereIsRaisedWithItsName) {
  EXPECT_THAT(FailureOf([] { OpenSerial("/dev/korval-none", {}); }), HasSubstr("/dev/korval-none"));
}

}  // namespace
}  // namespace korval::client
