// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korval::tests {

/// The client's end of a serial line, a real pseudo terminal pair: the server opens the other end by its
/// path. Calls block; what takes longer than the deadline raises std::runtime_error, which fails the test.
class SerialLine {
 public:
  SerialLine();
  ~SerialLine();
  SerialLine(const SerialLine&) = delete;
  SerialLine& operator=(const SerialLine&) = delete;

  /// The device that the server opens.
  const std::string& Device() const { return device_; }

  void Send(std::string_view bytes) const;
  /// Exactly one frame, by its length word.
  std::string Receive() const;
  std::string Ask(std::string_view request) const;
  /// Waits until the server has taken everything that was sent.
  void WaitUntilTaken() const;
  /// Whether bytes have come that nobody has received.
  bool HasInput() const;
  /// Pulls the cable: the server's device is gone.
  void Unplug();

 private:
  std::string ReceiveBytes(std::size_t count) const;

  int master_;
  int slave_;  // open for a look at what the server has not taken yet
  std::string device_;
};

}  // namespace korval::tests
