// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <utility>

#include "fuzz/CheckedReply.h"
#include "tests/support/FakeTcpSocket.h"

namespace korval::fuzz {

/// A TCP socket in memory that checks every reply at once, and keeps only how many there were and the last.
class CheckedTcpSocket : public tests::FakeTcpSocket {
 public:
  using FakeTcpSocket::FakeTcpSocket;

  void Send(base::ByteView bytes) override {
    if (!HasClient()) return;
    RequireReply(bytes);
    ++replies_;
    last_reply_ = base::ByteBuffer(bytes);
  }

  /// The replies since the last call.
  std::size_t TakeReplyCount() { return std::exchange(replies_, 0); }
  const base::ByteBuffer& LastReply() const { return last_reply_; }

 private:
  std::size_t replies_ = 0;
  base::ByteBuffer last_reply_;
};

}  // namespace korval::fuzz
