// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "protocol/TcpSocket.h"
#include "tests/support/CallLog.h"

namespace korval::tests {

/// A TCP server socket in memory. The test plays the clients, and may do so from inside a handler, as a
/// nested event loop would. Logs "listen", "accept N", "disconnect", "close tcp" and "send HEX".
class FakeTcpSocket : public protocol::TcpSocket {
 public:
  explicit FakeTcpSocket(CallLog& log) : log_(log) {}

  // What happens at the far end.

  /// A client asks for a connection; gives its number.
  RequestId Connect() {
    const RequestId request = ++last_request_;
    pending_.insert(request);
    events_.on_connection_request(request);
    return request;
  }
  /// A client asks for a connection and gives up before it is accepted.
  void ConnectAndGiveUp() { events_.on_connection_request(++last_request_); }
  void Connected() { events_.on_connect(); }
  /// Bytes of the current client come in.
  void Arrive(const base::ByteBuffer& bytes) {
    queue_.Append(bytes.View());
    events_.on_data_arrival();
  }
  /// The current client leaves.
  void Leave() {
    client_.reset();
    events_.on_close();
  }

  // What the test looks at.

  /// Replies as hexadecimal text, to whichever client; TakeSent forgets them.
  std::vector<std::string> TakeSent() { return std::exchange(sent_, {}); }
  bool HasClient() const { return client_.has_value(); }
  bool IsListening() const { return listening_; }
  std::size_t Unread() const { return queue_.Length(); }

  /// When set, Listen raises Failure with this text.
  std::string listen_failure;
  /// When set, Close raises Failure with this text.
  std::string close_failure;
  /// What SetAccess was given last.
  std::string listen_address;
  std::string allowed_clients;
  bool is_client_trusted = true;

  void SetEvents(Events events) override { events_ = std::move(events); }
  void SetAccess(const std::string& listen, const std::string& allow) override {
    listen_address = listen;
    allowed_clients = allow;
  }
  void SetLocalPort(std::uint16_t port) override { port_ = port; }
  void Listen() override {
    if (!listen_failure.empty()) throw base::Failure(listen_failure);
    log_.emplace_back("listen");
    listening_ = true;
    if (port_ == 0) port_ = 40001;
  }
  bool Accept(RequestId request) override {
    if (pending_.erase(request) == 0) return false;
    log_.push_back("accept " + std::to_string(request));
    DropClient();
    client_ = request;
    return true;
  }
  void Disconnect() override {
    log_.emplace_back("disconnect");
    DropClient();
  }
  void Close() override {
    if (!close_failure.empty()) throw base::Failure(close_failure);
    log_.emplace_back("close tcp");
    DropClient();
    listening_ = false;
  }
  State CurrentState() const override {
    if (client_) return State::kConnected;
    return listening_ ? State::kListening : State::kClosed;
  }
  bool IsClientTrusted() const override { return is_client_trusted; }
  base::ByteView Received() const override { return queue_.View(); }
  base::ByteBuffer Receive() override { return std::exchange(queue_, {}); }
  void Send(base::ByteView bytes) override {
    if (!client_) return;
    sent_.push_back(base::HexText(bytes));
    log_.push_back("send " + sent_.back());
  }

  std::string Name() const override { return "tcpServer"; }
  std::string LocalHostName() const override { return "bench"; }
  std::string LocalIp() const override { return "127.0.0.1"; }
  std::uint16_t LocalPort() const override { return port_; }
  std::string RemoteHost() const override { return "rig"; }
  std::string RemoteHostIp() const override { return "127.0.0.2"; }
  std::uint16_t RemotePort() const override { return 50007; }

 private:
  void DropClient() {
    client_.reset();
    queue_.Clear();
  }

  CallLog& log_;
  Events events_;
  std::uint16_t port_ = 0;
  bool listening_ = false;
  RequestId last_request_ = 0;
  std::set<RequestId> pending_;
  std::optional<RequestId> client_;
  base::ByteBuffer queue_;
  std::vector<std::string> sent_;
};

}  // namespace korval::tests
