// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include <QHostAddress>
#include <QList>
#include <QPair>

namespace korval::platform {

/// Where the server listens, and which clients it lets in.
struct TcpAccess {
  using Subnet = QPair<QHostAddress, int>;  // address and the bits of its network

  QHostAddress address{QHostAddress::Any};
  /// Empty: everybody.
  QList<Subnet> allowed;

  /// Whether the client is one of those listed. Of an empty list it is not.
  bool Names(const QHostAddress& client) const;
  /// Whether a client may be trusted with the computer: it is on it, or listed. `own` is the connection's
  /// other end.
  bool Trusts(const QHostAddress& client, const QHostAddress& own) const {
    return client.isLoopback() || client == own || Names(client);
  }
  bool LetsIn(const QHostAddress& client) const { return allowed.isEmpty() || Names(client); }
};

/// `listen` is an IP address of this machine, or "" for all of them. `allow` are IP addresses separated by
/// commas, each alone or with the bits of its network ("192.168.4.0/24, 127.0.0.1"), or "" for everybody.
/// Raises Failure for any other text: a slip of the pen must not let everybody in.
TcpAccess ReadTcpAccess(const std::string& listen, const std::string& allow);

}  // namespace korval::platform
