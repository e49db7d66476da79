// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include <QObject>

#include "platform/TcpAccess.h"
#include "platform/TcpConnection.h"
#include "protocol/TcpSocket.h"

class QTcpServer;

namespace korval::platform {

/// The server socket: listens with Qt Network and serves the client on its bare descriptor. It may be
/// destroyed inside any of its own events.
class QtTcpSocket : public QObject, public protocol::TcpSocket {
 public:
  using Report = std::function<void(const std::string&)>;

  /// Replies that a client leaves unread: above this many bytes it is dropped with a close event.
  static constexpr std::size_t kSendQueueLimit = std::size_t{1024} * 1024;
  /// Clients that wait to be announced: above this many, newcomers are turned away.
  static constexpr std::size_t kRequestLimit = 64;

  /// `report` is told of each client that is turned away or dropped for its behaviour.
  explicit QtTcpSocket(Report report = {});
  ~QtTcpSocket() override;

  void SetEvents(Events events) override { events_ = std::make_shared<const Events>(std::move(events)); }
  /// The texts that ReadTcpAccess takes.
  void SetAccess(const std::string& listen, const std::string& allow) override;
  void SetLocalPort(std::uint16_t port) override;
  void Listen() override;
  bool Accept(RequestId request) override;
  void Disconnect() override;
  void Close() override;
  State CurrentState() const override;
  bool IsClientTrusted() const override;
  base::ByteView Received() const override { return received_.View(); }
  base::ByteBuffer Receive() override { return std::exchange(received_, {}); }
  void Send(base::ByteView bytes) override;

  std::string Name() const override { return "tcpServer"; }
  std::string LocalHostName() const override;
  /// The client's end of it when there is one, else the address listened on.
  std::string LocalIp() const override;
  std::uint16_t LocalPort() const override;
  /// Always empty: looking the name up could hold up the test bench.
  std::string RemoteHost() const override { return {}; }
  std::string RemoteHostIp() const override;
  std::uint16_t RemotePort() const override;

 private:
  void ReadAccess(std::uint16_t port);
  void OnIncoming(qintptr descriptor);
  void AnnounceNext();
  bool ClientHasLeft() const;
  /// False at the end of the stream.
  bool ReadArrival();
  void OnReadable();
  void CloseByEvent();
  void DropClient();
  void Tell(const std::string& text) const;

  std::string listen_;
  std::string allow_;
  TcpAccess access_;  // what the two texts mean, once it listens
  Report report_;
  std::shared_ptr<const Events> events_;  // held by whoever is inside one
  std::unique_ptr<QTcpServer> server_;
  std::uint16_t port_ = 0;
  std::uint16_t kept_port_ = 0;  // the one that port 0 has found
  RequestId last_request_ = 0;
  RequestId announced_ = 0;                                       // the last one
  std::map<RequestId, std::unique_ptr<TcpConnection>> requests_;  // not yet accepted
  std::unique_ptr<TcpConnection> client_;
  base::ByteBuffer received_;
  bool close_owed_ = false;  // the client was dropped, and its close event is under way
};

}  // namespace korval::platform
