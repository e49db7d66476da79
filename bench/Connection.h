// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korval::bench {

/// A blocking TCP connection to 127.0.0.1 that sends small frames at once. Raises std::runtime_error.
class Connection {
 public:
  explicit Connection(int port);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// Sends `request` and fills `reply`, whose size says how many bytes to wait for.
  void Exchange(std::string_view request, std::string& reply) const;
  void Send(std::string_view bytes) const;
  void Receive(char* bytes, std::size_t count) const;

 private:
  int socket_;
};

}  // namespace korval::bench
