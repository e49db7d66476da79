// SPDX-License-Identifier: MIT
#include "platform/QtTcpSocket.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <QHostInfo>
#include <QNetworkInterface>
#include <QPointer>
#include <QTcpServer>
#include <QTimer>

#include "base/Failure.h"

namespace korval::platform {
namespace {

constexpr std::chrono::seconds kAcceptPause{1};

class Listener : public QTcpServer {
 public:
  explicit Listener(std::function<void(qintptr)> on_incoming) : on_incoming_(std::move(on_incoming)) {}

 protected:
  void incomingConnection(qintptr descriptor) override { on_incoming_(descriptor); }

 private:
  std::function<void(qintptr)> on_incoming_;
};

// A socket for both families sees IPv4 clients in IPv6 clothes.
QHostAddress Plain(const QHostAddress& address) {
  bool is_ipv4 = false;
  const QHostAddress ipv4(address.toIPv4Address(&is_ipv4));
  return is_ipv4 ? ipv4 : address;
}

std::string AddressText(const QHostAddress& address) { return Plain(address).toString().toStdString(); }

bool IsEveryAddress(const QHostAddress& address) {
  return address == QHostAddress(QHostAddress::Any) || address == QHostAddress(QHostAddress::AnyIPv4) ||
         address == QHostAddress(QHostAddress::AnyIPv6);
}

std::string FirstOwnAddress() {
  for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
    if (!address.isLoopback() && address.protocol() == QAbstractSocket::IPv4Protocol)
      return AddressText(address);
  }
  return "127.0.0.1";
}

std::string WhatToDo(QAbstractSocket::SocketError error) {
  switch (error) {
    case QAbstractSocket::AddressInUseError:
      return "stop the program that uses it, or choose another port (--tcp-port)";
    case QAbstractSocket::SocketAccessError:
      return "ports below 1024 need special rights; choose a higher one (--tcp-port)";
    case QAbstractSocket::SocketAddressNotAvailableError:
      return "choose an address of this machine (--listen, or Listen on in the settings)";
    default:
      return "check the address and the port (--listen, --tcp-port)";
  }
}

}  // namespace

QtTcpSocket::QtTcpSocket(Report report)
    : report_(std::move(report)),
      events_(std::make_shared<const Events>()),
      server_(std::make_unique<Listener>([this](qintptr descriptor) { OnIncoming(descriptor); })) {
  // Qt stops accepting for good when the process has no descriptor left for a moment.
  connect(server_.get(), &QTcpServer::acceptError, this, [this] {
    QTimer::singleShot(kAcceptPause, server_.get(), [this] { server_->resumeAccepting(); });
  });
}

QtTcpSocket::~QtTcpSocket() = default;

void QtTcpSocket::SetAccess(const std::string& listen, const std::string& allow) {
  server_->close();
  listen_ = listen;
  allow_ = allow;
}

void QtTcpSocket::SetLocalPort(std::uint16_t port) {
  if (port != port_) kept_port_ = 0;
  port_ = port;
}

void QtTcpSocket::Listen() {
  const std::uint16_t port = port_ == 0 ? kept_port_ : port_;
  if (server_->isListening() && server_->serverPort() == port) return;
  server_->close();
  ReadAccess(port);
  const QHostAddress& address = access_.address;
  if (!server_->listen(address, port)) {
    throw base::Failure("TCP port " + std::to_string(port) + " on " +
                        (IsEveryAddress(address) ? "all addresses" : AddressText(address)) +
                        " cannot be opened: " + server_->errorString().toStdString() + "; " +
                        WhatToDo(server_->serverError()));
  }
  if (port_ == 0) kept_port_ = server_->serverPort();
}

void QtTcpSocket::ReadAccess(std::uint16_t port) {
  try {
    access_ = ReadTcpAccess(listen_, allow_);
  } catch (const base::Failure& failure) {
    throw base::Failure("TCP port " + std::to_string(port) + " stays closed: " + failure.Description());
  }
}

void QtTcpSocket::OnIncoming(qintptr descriptor) {
  auto connection = std::make_unique<TcpConnection>(descriptor);
  const QHostAddress client = Plain(connection->RemoteAddress());
  if (!access_.LetsIn(client)) {
    Tell("Client " + AddressText(client) +
         " refused, it is not allowed (--allow, or Allowed clients in the settings)");
    return;
  }
  if (requests_.size() >= kRequestLimit) return;
  requests_[++last_request_] = std::move(connection);
  // Announced from the event loop, for a handler that waits must not hold up the accepting of others.
  QMetaObject::invokeMethod(
      this, [this] { AnnounceNext(); }, Qt::QueuedConnection);
}

// The one before is done with first: what it left is served, and its leaving is told. That may wait, and
// others be announced meanwhile.
void QtTcpSocket::AnnounceNext() {
  const QPointer<QtTcpSocket> alive(this);
  while (alive && ClientHasLeft()) close_owed_ ? CloseByEvent() : OnReadable();
  if (!alive) return;
  const auto next = requests_.upper_bound(announced_);
  if (next == requests_.end()) return;
  announced_ = next->first;
  const auto events = events_;
  if (events->on_connection_request) events->on_connection_request(announced_);
}

bool QtTcpSocket::ClientHasLeft() const { return close_owed_ || (client_ && client_->PeerHasLeft()); }

bool QtTcpSocket::Accept(RequestId request) {
  auto found = requests_.extract(request);
  if (found.empty()) return false;
  DropClient();
  client_ = std::move(found.mapped());
  client_->Watch([this] { OnReadable(); });
  return true;
}

// One arrival is all that has come. The end of the stream behind new bytes is reported by the next event.
bool QtTcpSocket::ReadArrival() {
  const std::size_t held = received_.Length();
  while (received_.Length() <= kReceiveQueueLimit) {
    const std::size_t before = received_.Length();
    if (client_->Read(received_) == TcpConnection::End::kClosed) return before > held;
    if (received_.Length() - before < TcpConnection::kReadSize) return true;
  }
  return true;
}

void QtTcpSocket::OnReadable() {
  if (!ReadArrival()) {
    CloseByEvent();
    return;
  }
  if (received_.Length() > kReceiveQueueLimit) {
    Tell("Client " + RemoteHostIp() + " dropped, it sends without waiting for answers");
    received_.Clear();
    CloseByEvent();
    return;
  }
  if (received_.Empty()) return;
  const auto events = events_;
  if (events->on_data_arrival) events->on_data_arrival();
}

void QtTcpSocket::Send(base::ByteView bytes) {
  if (!client_ || client_->Write(bytes, kSendQueueLimit)) return;
  Tell("Client " + RemoteHostIp() + " dropped, it does not read its answers");
  client_.reset();
  close_owed_ = true;
  // Whoever sends does not expect an event meanwhile.
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (close_owed_) CloseByEvent();
      },
      Qt::QueuedConnection);
}

void QtTcpSocket::CloseByEvent() {
  client_.reset();
  close_owed_ = false;
  const auto events = events_;
  if (events->on_close) events->on_close();
}

void QtTcpSocket::DropClient() {
  client_.reset();
  received_.Clear();
  close_owed_ = false;
}

void QtTcpSocket::Disconnect() { DropClient(); }

void QtTcpSocket::Close() {
  DropClient();
  server_->close();
  requests_.clear();
}

void QtTcpSocket::Tell(const std::string& text) const {
  if (report_) report_(text);
}

protocol::TcpSocket::State QtTcpSocket::CurrentState() const {
  if (client_) return State::kConnected;
  return server_->isListening() ? State::kListening : State::kClosed;
}

bool QtTcpSocket::IsClientTrusted() const {
  return client_ && access_.Trusts(Plain(client_->RemoteAddress()), Plain(client_->LocalAddress()));
}

std::string QtTcpSocket::LocalHostName() const { return QHostInfo::localHostName().toStdString(); }

std::string QtTcpSocket::LocalIp() const {
  if (client_) return AddressText(client_->LocalAddress());
  return IsEveryAddress(access_.address) ? FirstOwnAddress() : AddressText(access_.address);
}

std::uint16_t QtTcpSocket::LocalPort() const {
  return server_->isListening() ? server_->serverPort() : kept_port_;
}

std::string QtTcpSocket::RemoteHostIp() const {
  return client_ ? AddressText(client_->RemoteAddress()) : std::string();
}

std::uint16_t QtTcpSocket::RemotePort() const { return client_ ? client_->RemotePort() : std::uint16_t{0}; }

}  // namespace korval::platform
