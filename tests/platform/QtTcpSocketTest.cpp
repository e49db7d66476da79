// SPDX-License-Identifier: MIT
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "LoopbackClient.h"
#include "QtTest.h"
#include "base/Failure.h"
#include "platform/QtTcpSocket.h"

namespace korval::platform {
namespace {

using base::ByteBuffer;
using State = protocol::TcpSocket::State;
using RequestId = protocol::TcpSocket::RequestId;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t kLimit = protocol::TcpSocket::kReceiveQueueLimit;

class QtTcpSocketTest : public QtTest {
 protected:
  QtTcpSocketTest() {
    // Each test replaces what it looks at.
    events_.on_connection_request = [this](RequestId request) { accepted_ = socket_->Accept(request); };
    events_.on_data_arrival = [this] { received_.push_back(socket_->Receive().ToHex()); };
    events_.on_close = [this] { ++closes_; };
  }

  /// Listens on a free port of the loopback address.
  void Listen(const std::string& allow = "", const std::string& address = "127.0.0.1") {
    socket_ = std::make_unique<QtTcpSocket>([this](const std::string& text) { reports_.push_back(text); });
    socket_->SetEvents(events_);
    socket_->SetAccess(address, allow);
    socket_->SetLocalPort(0);
    socket_->Listen();
  }
  std::unique_ptr<LoopbackClient> Connect(int receive_buffer = 0) {
    return std::make_unique<LoopbackClient>(socket_->LocalPort(), receive_buffer);
  }
  std::unique_ptr<LoopbackClient> ConnectAccepted(int receive_buffer = 0) {
    accepted_.reset();
    auto client = Connect(receive_buffer);
    EXPECT_TRUE(RunUntil([&] { return accepted_.has_value(); }));
    return client;
  }

  protocol::TcpSocket::Events events_;
  std::unique_ptr<QtTcpSocket> socket_;
  std::optional<bool> accepted_;
  std::vector<std::string> received_;
  std::vector<std::string> reports_;
  int closes_ = 0;
};

TEST_F(QtTcpSocketTest, AnnouncesAClientAndAcceptsIt) {
  Listen();
  EXPECT_EQ(socket_->CurrentState(), State::kListening);
  EXPECT_EQ(socket_->LocalIp(), "127.0.0.1");
  const auto client = ConnectAccepted();
  EXPECT_EQ(accepted_, true);
  EXPECT_EQ(socket_->CurrentState(), State::kConnected);
  EXPECT_EQ(socket_->RemoteHostIp(), "127.0.0.1");
  EXPECT_EQ(socket_->RemotePort(), client->OwnPort());
  EXPECT_EQ(socket_->LocalIp(), "127.0.0.1");
}

TEST_F(QtTcpSocketTest, ShowsAnIpv4ClientOfBothFamiliesInItsUsualForm) {
  Listen("", "");
  const auto client = ConnectAccepted();
  EXPECT_EQ(socket_->RemoteHostIp(), "127.0.0.1");
}

TEST_F(QtTcpSocketTest, AnswersARequest) {
  events_.on_data_arrival = [this] {
    EXPECT_EQ(socket_->Receive(), (ByteBuffer{0x00, 0x06, 0x00, 0x02, 0x00, 0x08}));
    socket_->Send(ByteBuffer{0x00, 0x06, 0xAA, 0xBB, 0xFF, 0x00}.View());
  };
  Listen();
  const auto client = ConnectAccepted();
  client->Send(ByteBuffer{0x00, 0x06, 0x00, 0x02, 0x00, 0x08}.View());
  EXPECT_TRUE(RunUntil([&] { return client->Received().Length() == 6; }));
  EXPECT_EQ(client->Received(), (ByteBuffer{0x00, 0x06, 0xAA, 0xBB, 0xFF, 0x00}));
}

TEST_F(QtTcpSocketTest, DeliversASecondFrameWhileTheHandlerOfTheFirstWaits) {
  std::unique_ptr<LoopbackClient> client;
  std::string order;
  events_.on_data_arrival = [&] {
    const std::string bytes = socket_->Receive().ToHex();
    order += bytes + " ";
    if (bytes != "01") return;
    client->Send(ByteBuffer{0x02}.View());
    EXPECT_TRUE(RunUntil([&] { return order.find("02") != std::string::npos; }));
    order += "end of 01";
  };
  Listen();
  client = ConnectAccepted();
  client->Send(ByteBuffer{0x01}.View());
  EXPECT_TRUE(RunUntil([&] { return order.ends_with("end of 01"); }));
  EXPECT_EQ(order, "01 02 end of 01");
}

TEST_F(QtTcpSocketTest, KeepsWhatAHandlerDoesNotReadUntilTheNextArrival) {
  int arrivals = 0;
  events_.on_data_arrival = [&] {
    if (++arrivals == 2) received_.push_back(socket_->Receive().ToHex());
  };
  Listen();
  const auto client = ConnectAccepted();
  client->Send(ByteBuffer{0x01, 0x02}.View());
  ASSERT_TRUE(RunUntil([&] { return arrivals == 1; }));
  client->Send(ByteBuffer{0x03}.View());
  ASSERT_TRUE(RunUntil([&] { return arrivals == 2; }));
  EXPECT_THAT(received_, ElementsAre("010203"));
}

TEST_F(QtTcpSocketTest, DeliversADisconnectWhileAHandlerWaits) {
  std::unique_ptr<LoopbackClient> client;
  bool handler_ended = false;
  events_.on_data_arrival = [&] {
    socket_->Receive();
    client->Leave();
    EXPECT_TRUE(RunUntil([&] { return closes_ == 1; }));
    EXPECT_EQ(socket_->CurrentState(), State::kListening);
    socket_->Send(ByteBuffer{0x01}.View());  // goes nowhere
    handler_ended = true;
  };
  Listen();
  client = ConnectAccepted();
  client->Send(ByteBuffer{0x01}.View());
  EXPECT_TRUE(RunUntil([&] { return handler_ended; }));
  EXPECT_EQ(closes_, 1);
}

TEST_F(QtTcpSocketTest, AnnouncesAnotherClientWhileAHandlerWaits) {
  std::unique_ptr<LoopbackClient> newcomer;
  bool handler_ended = false;
  events_.on_data_arrival = [&] {
    received_.push_back(socket_->Receive().ToHex());
    newcomer = ConnectAccepted();
    socket_->Send(ByteBuffer{0x55}.View());
    handler_ended = true;
  };
  Listen();
  const auto client = ConnectAccepted();
  client->Send(ByteBuffer{0x01}.View());
  ASSERT_TRUE(RunUntil([&] { return handler_ended; }));
  EXPECT_TRUE(RunUntil([&] { return client->IsDropped() && newcomer->Received().Length() == 1; }));
  EXPECT_EQ(client->Received().Length(), 0U);
}

TEST_F(QtTcpSocketTest, LetsNothingOfAReplacedClientReachAnybody) {
  Listen();
  const auto first = ConnectAccepted();
  const auto second = Connect();
  first->Send(ByteBuffer{0x01}.View());  // both lie ready when the events run
  accepted_.reset();
  events_.on_connection_request = [this](RequestId request) {
    accepted_ = socket_->Accept(request);
    received_.clear();
  };
  socket_->SetEvents(events_);
  ASSERT_TRUE(RunUntil([&] { return accepted_.has_value(); }));
  first->Send(ByteBuffer{0x01}.View());
  first->Leave();
  second->Send(ByteBuffer{0x02}.View());
  ASSERT_TRUE(RunUntil([&] { return !received_.empty(); }));
  RunQueuedEvents();
  EXPECT_THAT(received_, ElementsAre("02"));
  EXPECT_EQ(closes_, 0);
}

/// What becomes of a client in the moment before another one connects, and the events that must come of it.
struct Departure {
  const char* name;
  std::function<void(LoopbackClient&)> happen;
  const char* events;
};

class QtTcpSocketDepartureTest : public QtTcpSocketTest, public testing::WithParamInterface<Departure> {};

TEST_P(QtTcpSocketDepartureTest, IsToldBeforeTheNextClientIsAnnounced) {
  std::string order;
  events_.on_connection_request = [&](RequestId request) {
    order += "request ";
    accepted_ = socket_->Accept(request);
  };
  events_.on_data_arrival = [&] { order += socket_->Receive().ToHex() + " "; };
  events_.on_close = [&] { order += "close "; };
  Listen();
  for (int round = 0; round < 20; ++round) {
    const auto first = ConnectAccepted();
    order.clear();
    accepted_.reset();
    GetParam().happen(*first);
    const auto second = Connect();
    ASSERT_TRUE(RunUntil([&] { return accepted_.has_value(); }));
    EXPECT_EQ(order, GetParam().events) << round;
    socket_->Disconnect();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Departures, QtTcpSocketDepartureTest,
    testing::Values(Departure{"none", [](LoopbackClient&) {}, "request "},
                    Departure{"in_order", [](LoopbackClient& client) { client.Leave(); }, "close request "},
                    Departure{"reset", [](LoopbackClient& client) { client.Abort(); }, "close request "},
                    Departure{"half", [](LoopbackClient& client) { client.FinishSending(); },
                              "close request "},
                    Departure{"with_a_last_frame",
                              [](LoopbackClient& client) {
                                client.Send(ByteBuffer{0x01, 0x02}.View());
                                client.Leave();
                              },
                              "0102 close request "}),
    [](const auto& departure) { return departure.param.name; });

TEST_F(QtTcpSocketTest, AnnouncesClientsInTheirOrderAlsoWhileTheLeavingOfTheOneBeforeWaits) {
  std::vector<RequestId> announced;
  std::unique_ptr<LoopbackClient> third;
  events_.on_connection_request = [&](RequestId request) {
    announced.push_back(request);
    accepted_ = socket_->Accept(request);
  };
  events_.on_close = [&] {
    third = Connect();
    EXPECT_TRUE(RunUntil([&] { return announced.size() >= 2; }));
  };
  Listen();
  const auto first = ConnectAccepted();
  first->Leave();
  const auto second = Connect();
  ASSERT_TRUE(RunUntil([&] { return announced.size() == 3; }));
  EXPECT_THAT(announced, ElementsAre(1, 2, 3));
  EXPECT_TRUE(RunUntil([&] { return second->IsDropped(); }));
  EXPECT_EQ(socket_->RemotePort(), third->OwnPort());
}

TEST_F(QtTcpSocketTest, LetsWhatAClientSentBeforeItLeftBeRead) {
  events_.on_data_arrival = [] {};
  events_.on_close = [this] {
    received_.push_back(socket_->Receive().ToHex());
    ++closes_;
  };
  Listen();
  const auto client = ConnectAccepted();
  client->Send(ByteBuffer{0x01}.View());
  client->Leave();
  ASSERT_TRUE(RunUntil([&] { return closes_ == 1; }));
  EXPECT_THAT(received_, ElementsAre("01"));
}

TEST_F(QtTcpSocketTest, AcceptsAClientThatIsGoneAlreadyAndReportsThatItLeft) {
  std::optional<RequestId> asked;
  events_.on_connection_request = [&](RequestId request) { asked = request; };
  Listen();
  const auto client = Connect();
  ASSERT_TRUE(RunUntil([&] { return asked.has_value(); }));
  client->Leave();
  EXPECT_FALSE(socket_->Accept(*asked + 1));
  EXPECT_TRUE(socket_->Accept(*asked));
  EXPECT_EQ(socket_->RemoteHostIp(), "127.0.0.1");
  EXPECT_TRUE(RunUntil([&] { return closes_ == 1; }));
}

TEST_F(QtTcpSocketTest, AllThatHasComeIsOneArrival) {
  std::vector<std::size_t> arrivals;
  events_.on_data_arrival = [&] { arrivals.push_back(socket_->Receive().Length()); };
  std::optional<RequestId> asked;
  events_.on_connection_request = [&](RequestId request) { asked = request; };
  Listen();
  const auto client = Connect();
  ASSERT_TRUE(RunUntil([&] { return asked.has_value(); }));
  ByteBuffer much;
  much.SetLength(100'000);
  client->Send(much.View());
  socket_->Accept(*asked);
  ASSERT_TRUE(RunUntil([&] { return !arrivals.empty(); }));
  EXPECT_THAT(arrivals, ElementsAre(100'000U));
}

TEST_F(QtTcpSocketTest, StillReadsWhatAClientLeftBehind) {
  std::optional<RequestId> asked;
  events_.on_connection_request = [&](RequestId request) { asked = request; };
  Listen();
  const auto client = Connect();
  ASSERT_TRUE(RunUntil([&] { return asked.has_value(); }));
  client->Send(ByteBuffer{0x01}.View());
  client->Leave();
  EXPECT_TRUE(socket_->Accept(*asked));
  EXPECT_TRUE(RunUntil([&] { return closes_ == 1; }));
  EXPECT_THAT(received_, ElementsAre("01"));
}

TEST_F(QtTcpSocketTest, AnswersAClientThatSendsNothingMore) {
  events_.on_data_arrival = [this] { socket_->Send(socket_->Receive().View()); };
  Listen();
  const auto client = ConnectAccepted();
  client->Send(ByteBuffer{0x01}.View());
  client->FinishSending();
  EXPECT_TRUE(RunUntil([&] { return client->IsDropped(); }));
  EXPECT_EQ(client->Received(), ByteBuffer{0x01});
  EXPECT_EQ(closes_, 1);
}

TEST_F(QtTcpSocketTest, DropsAClientWithoutAnEventAndListensOn) {
  Listen();
  const auto first = ConnectAccepted();
  first->Send(ByteBuffer{0x01}.View());
  socket_->Disconnect();
  EXPECT_EQ(socket_->CurrentState(), State::kListening);
  EXPECT_TRUE(RunUntil([&] { return first->IsDropped(); }));
  const auto second = ConnectAccepted();
  EXPECT_EQ(socket_->CurrentState(), State::kConnected);
  EXPECT_THAT(received_, IsEmpty());
  EXPECT_EQ(closes_, 0);
}

TEST_F(QtTcpSocketTest, ClosesWithoutAnEvent) {
  Listen();
  const auto client = ConnectAccepted();
  const auto waiting = Connect();
  client->Send(ByteBuffer{0x01}.View());
  socket_->Close();
  EXPECT_EQ(socket_->CurrentState(), State::kClosed);
  EXPECT_TRUE(RunUntil([&] { return client->IsDropped() && waiting->IsDropped(); }));
  RunQueuedEvents();
  EXPECT_THAT(received_, IsEmpty());
  EXPECT_EQ(closes_, 0);
}

TEST_F(QtTcpSocketTest, KeepsTheFreePortItFound) {
  Listen();
  const std::uint16_t port = socket_->LocalPort();
  EXPECT_NE(port, 0);
  socket_->Close();
  EXPECT_EQ(socket_->LocalPort(), port);
  socket_->SetLocalPort(0);
  socket_->Listen();
  EXPECT_EQ(socket_->LocalPort(), port);
}

TEST_F(QtTcpSocketTest, KeepsTheClientWhenItListensAlready) {
  Listen();
  const auto client = ConnectAccepted();
  const std::uint16_t port = socket_->LocalPort();
  socket_->Listen();
  EXPECT_EQ(socket_->CurrentState(), State::kConnected);
  EXPECT_EQ(socket_->LocalPort(), port);
}

TEST_F(QtTcpSocketTest, SaysWhichPortIsInUseAndWhatToDo) {
  Listen();
  QtTcpSocket other;
  other.SetAccess("127.0.0.1", "");
  other.SetLocalPort(socket_->LocalPort());
  try {
    other.Listen();
    FAIL() << "two sockets on one port";
  } catch (const base::Failure& failure) {
    EXPECT_THAT(failure.Description(),
                HasSubstr("TCP port " + std::to_string(socket_->LocalPort()) + " on 127.0.0.1"));
    EXPECT_THAT(failure.Description(), HasSubstr("stop the program that uses it, or choose another port"));
  }
  EXPECT_EQ(other.CurrentState(), State::kClosed);
}

TEST_F(QtTcpSocketTest, SaysThatAnAddressIsNotOfThisMachine) {
  QtTcpSocket other;
  other.SetAccess("192.0.2.1", "");
  other.SetLocalPort(0);
  try {
    other.Listen();
    FAIL() << "listens on a documentation address";
  } catch (const base::Failure& failure) {
    EXPECT_THAT(failure.Description(), HasSubstr("192.0.2.1"));
    EXPECT_THAT(failure.Description(), HasSubstr("choose an address of this machine"));
  }
}

TEST_F(QtTcpSocketTest, TurnsAwayClientsThatAreNotAllowed) {
  Listen("10.0.0.0/8");
  const auto client = Connect();
  EXPECT_TRUE(RunUntil([&] { return client->IsDropped(); }));
  EXPECT_EQ(accepted_, std::nullopt);
  EXPECT_THAT(reports_,
              ElementsAre("Client 127.0.0.1 refused, it is not allowed (--allow, or Allowed clients "
                          "in the settings)"));
}

TEST_F(QtTcpSocketTest, LetsAllowedClientsInOnASocketOfBothFamilies) {
  Listen("10.0.0.0/8, 127.0.0.1", "");
  const auto client = ConnectAccepted();
  EXPECT_EQ(accepted_, true);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(QtTcpSocketTest, StaysClosedWhileNobodyKnowsWhomToLetIn) {
  Listen();
  const std::uint16_t port = socket_->LocalPort();
  socket_->SetAccess("127.0.0.1", "127.0.0.1, 10.0.0.0/88");
  EXPECT_EQ(socket_->CurrentState(), State::kClosed);
  try {
    socket_->Listen();
    FAIL() << "listens";
  } catch (const base::Failure& failure) {
    EXPECT_THAT(failure.Description(), HasSubstr("TCP port " + std::to_string(port) + " stays closed"));
    EXPECT_THAT(failure.Description(), HasSubstr("'10.0.0.0/88'"));
  }
  EXPECT_EQ(socket_->CurrentState(), State::kClosed);
  socket_->SetAccess("127.0.0.1", "127.0.0.1");
  socket_->Listen();
  EXPECT_EQ(socket_->LocalPort(), port);
  const auto client = ConnectAccepted();
  EXPECT_EQ(accepted_, true);
}

TEST_F(QtTcpSocketTest, TrustsAClientOnThisMachine) {
  Listen();
  EXPECT_FALSE(socket_->IsClientTrusted()) << "there is none";
  const auto client = ConnectAccepted();
  EXPECT_TRUE(socket_->IsClientTrusted());
}

TEST_F(QtTcpSocketTest, DropsAClientWhoseBytesNobodyReads) {
  events_.on_data_arrival = [] {};
  Listen();
  const auto client = ConnectAccepted();
  ByteBuffer bytes;
  bytes.SetLength(60000);
  std::size_t sent = 0;
  ASSERT_TRUE(RunUntil([&] {
    if (sent <= kLimit) sent += client->Send(bytes.View(0, std::min<std::size_t>(60000, kLimit + 1 - sent)));
    return closes_ == 1;
  }));
  EXPECT_EQ(sent, kLimit + 1);
  EXPECT_EQ(socket_->Receive().Length(), 0U);
  EXPECT_THAT(reports_, ElementsAre("Client 127.0.0.1 dropped, it sends without waiting for answers"));
}

TEST_F(QtTcpSocketTest, SendsALongAnswerWholeToASlowClient) {
  ByteBuffer answer;
  answer.SetLength(QtTcpSocket::kSendQueueLimit);
  for (std::size_t i = 0; i < answer.Length(); ++i) answer.SetAt(i, static_cast<std::uint8_t>(i % 251));
  Listen();
  const auto client = ConnectAccepted(4096);
  socket_->Send(answer.View());
  EXPECT_TRUE(RunUntil([&] { return client->Received().Length() == answer.Length(); }));
  EXPECT_EQ(client->Received(), answer);
}

TEST_F(QtTcpSocketTest, DropsAClientThatDoesNotReadItsAnswers) {
  Listen();
  const auto client = ConnectAccepted(4096);
  ByteBuffer answer;
  answer.SetLength(QtTcpSocket::kSendQueueLimit);
  for (int i = 0; i < 100 && socket_->CurrentState() == State::kConnected; ++i) socket_->Send(answer.View());
  EXPECT_EQ(socket_->CurrentState(), State::kListening);
  EXPECT_EQ(closes_, 0) << "no event from inside Send";
  EXPECT_TRUE(RunUntil([&] { return closes_ == 1; }));
  EXPECT_THAT(reports_, ElementsAre("Client 127.0.0.1 dropped, it does not read its answers"));
}

TEST_F(QtTcpSocketTest, TellsOfADroppedClientBeforeTheNextIsAnnounced) {
  std::string order;
  events_.on_close = [&] { order += "close "; };
  Listen();
  const auto client = ConnectAccepted(4096);
  events_.on_connection_request = [&](RequestId request) {
    order += "request ";
    accepted_ = socket_->Accept(request);
    ByteBuffer answer;
    answer.SetLength(QtTcpSocket::kSendQueueLimit);
    for (int i = 0; i < 100 && socket_->CurrentState() == State::kConnected; ++i)
      socket_->Send(answer.View());
  };
  socket_->SetEvents(events_);
  const auto second = Connect(4096);  // is announced, and dropped when it is
  const auto third = Connect(4096);
  EXPECT_TRUE(RunUntil([&] { return order == "request close request close "; }));
}

TEST_F(QtTcpSocketTest, OwesNoCloseEventOnceItWasClosed) {
  Listen();
  const auto client = ConnectAccepted(4096);
  ByteBuffer answer;
  answer.SetLength(QtTcpSocket::kSendQueueLimit);
  for (int i = 0; i < 100 && socket_->CurrentState() == State::kConnected; ++i) socket_->Send(answer.View());
  socket_->Close();
  RunQueuedEvents();
  EXPECT_EQ(closes_, 0);
}

TEST_F(QtTcpSocketTest, MayBeDestroyedInsideAConnectionRequest) {
  events_.on_connection_request = [this](RequestId) { socket_.reset(); };
  Listen();
  const auto client = Connect();
  EXPECT_TRUE(RunUntil([&] { return client->IsDropped(); }));
}

TEST_F(QtTcpSocketTest, MayBeDestroyedInsideAnArrival) {
  events_.on_data_arrival = [this] { socket_.reset(); };
  Listen();
  const auto client = ConnectAccepted();
  client->Send(ByteBuffer{0x01}.View());
  EXPECT_TRUE(RunUntil([&] { return client->IsDropped(); }));
}

TEST_F(QtTcpSocketTest, MayBeDestroyedInsideACloseEvent) {
  events_.on_close = [this] { socket_.reset(); };
  Listen();
  const auto client = ConnectAccepted();
  client->Leave();
  EXPECT_TRUE(RunUntil([&] { return socket_ == nullptr; }));
}

TEST_F(QtTcpSocketTest, MayBeDestroyedInsideACloseEventBeforeAnAnnouncement) {
  events_.on_close = [this] { socket_.reset(); };
  Listen();
  const auto client = ConnectAccepted();
  client->Leave();
  const auto next = Connect();
  EXPECT_TRUE(RunUntil([&] { return socket_ == nullptr; }));
  RunQueuedEvents();
}

TEST_F(QtTcpSocketTest, MayBeDestroyedInsideTheWaitOfAnArrival) {
  bool handler_ended = false;
  events_.on_data_arrival = [&] {
    socket_->Receive();
    const auto destroy = loop_.CreateTimer([this] { socket_.reset(); });
    destroy->Start(std::chrono::microseconds(0));
    EXPECT_TRUE(RunUntil([&] { return socket_ == nullptr; }));
    handler_ended = true;
  };
  Listen();
  const auto client = ConnectAccepted();
  client->Send(ByteBuffer{0x01}.View());
  EXPECT_TRUE(RunUntil([&] { return handler_ended; }));
  EXPECT_TRUE(client->IsDropped());
}

}  // namespace
}  // namespace korval::platform
