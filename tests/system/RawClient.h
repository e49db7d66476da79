// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace korval::tests {

/// A client of the server at 127.0.0.1 that sends any bytes and reads whole frames. Its calls block;
/// what takes longer than the deadline raises std::runtime_error, which fails the test.
class RawClient {
 public:
  explicit RawClient(int port) : RawClient("127.0.0.1", port) {}
  /// The connection comes from `own_address`, one of the loopback addresses unless the server is elsewhere.
  RawClient(const char* own_address, int port, const char* server_address = "127.0.0.1");
  ~RawClient();
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  void Send(std::string_view bytes) const;
  /// Sends in pieces of one segment of an Ethernet, as apart as a wire of 10 Mbit/s has them. False when this
  /// process was held up meanwhile, and they came further apart than any such wire would have them.
  bool SendPaced(std::string_view bytes) const;
  /// Sends and leaves it to the system to deliver all of it while the server stands still.
  void SendToStoppedServer(std::string_view bytes) const;
  /// Exactly one frame, by its length word.
  std::string Receive() const;
  std::string Ask(std::string_view request) const;
  /// Asks again for as long as another command is in progress, and returns the first other answer.
  std::string AskUntilFree(std::string_view request) const;
  /// Waits for the server's end of the connection: true when it ended without a further byte.
  bool EndedByServer() const;
  /// Ends this side's sending and leaves the other direction open.
  void EndSending() const;
  /// Closes the connection in order, or, aborting it, with a reset.
  void Close();
  void Abort();

  int LocalPort() const;

 private:
  std::string ReceiveBytes(std::size_t count) const;

  int socket_;
};

}  // namespace korval::tests
