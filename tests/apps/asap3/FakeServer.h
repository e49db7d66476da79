// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace korval::tests {

/// A server on 127.0.0.1 that serves one client by a script, on a thread of its own. An answer that is empty
/// leaves the request unanswered; a request behind the script's end is answered by closing the connection.
class FakeServer {
 public:
  /// The answers in hex, in the order of the requests.
  explicit FakeServer(std::vector<std::string> answers);
  ~FakeServer();
  FakeServer(const FakeServer&) = delete;
  FakeServer& operator=(const FakeServer&) = delete;

  std::uint16_t Port() const { return port_; }
  /// Waits until that many requests have come; raises std::runtime_error when they do not.
  void WaitForRequests(std::size_t count);
  /// The requests in hex; whole once the client has ended.
  std::vector<std::string> Requests();

 private:
  void Serve();
  /// Waits until the client, if one came, is served.
  void End();
  /// A frame by its length word, in hex; "" when the client is gone.
  static std::string Receive(int client);

  const std::vector<std::string> answers_;
  int listener_;
  std::uint16_t port_ = 0;
  std::mutex mutex_;
  std::condition_variable came_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace korval::tests
