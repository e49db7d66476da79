// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "base/ByteBuffer.h"

namespace korval::platform {

/// A TCP client on 127.0.0.1 that never blocks on the server, which runs on the same thread.
class LoopbackClient {
 public:
  /// Connects; the system completes that without the server's help. `receive_buffer` of 0 leaves the
  /// system's own size.
  explicit LoopbackClient(std::uint16_t port, int receive_buffer = 0);
  ~LoopbackClient() { Leave(); }
  LoopbackClient(const LoopbackClient&) = delete;
  LoopbackClient& operator=(const LoopbackClient&) = delete;

  /// How many bytes the system took.
  std::size_t Send(base::ByteView bytes);
  /// Says that nothing more will be sent, and goes on reading.
  void FinishSending();
  void Leave();
  /// Leaves with a reset.
  void Abort();

  /// Everything that has come so far.
  const base::ByteBuffer& Received();
  /// Whether the server has closed the connection.
  bool IsDropped();
  std::uint16_t OwnPort() const;

 private:
  int descriptor_;
  base::ByteBuffer received_;
  bool dropped_ = false;
};

}  // namespace korval::platform
