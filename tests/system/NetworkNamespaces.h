// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace korval::tests {

/// Two networks of their own, for a server and for its client, with a wire between them that has an
/// Ethernet's segments and 10 Mbit/s. Nothing of the machine's own network is touched. They go with this
/// object.
class NetworkNamespaces {
 public:
  static constexpr const char* kServerAddress = "10.77.0.1";
  static constexpr const char* kClientAddress = "10.77.0.2";

  NetworkNamespaces();
  ~NetworkNamespaces();
  NetworkNamespaces(const NetworkNamespaces&) = delete;
  NetworkNamespaces& operator=(const NetworkNamespaces&) = delete;

  /// False where this process may not make networks; needs the rights of root.
  bool AreAllowed() const { return are_allowed_; }
  const std::string& Server() const { return server_; }
  const std::string& Client() const { return client_; }
  /// Does `work` in the client's network: sockets that it makes belong there.
  void InClient(const std::function<void()>& work) const;
  void CutTheWire() const;

 private:
  std::string server_;
  std::string client_;
  bool are_allowed_ = false;
};

}  // namespace korval::tests
