// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"

namespace korval::apps {

/// Bytes on a line that has no speed of its own, one after the other as a serial line would carry them: each
/// arrives when its last bit does.
class PacedOutput {
 public:
  using Write = std::function<void(base::ByteView)>;

  PacedOutput(std::shared_ptr<base::EventLoop> loop, Write write);

  /// Behind what is still on its way, at so many bit/s.
  void Send(base::ByteView bytes, std::int32_t baud);

 private:
  struct Piece {
    base::ByteBuffer bytes;
    base::Duration byte_time;
    std::size_t sent = 0;
  };

  void SendDue();

  std::shared_ptr<base::EventLoop> loop_;
  Write write_;
  std::deque<Piece> pieces_;
  base::TimePoint last_byte_{};  // when it was complete
  std::unique_ptr<base::Timer> timer_;
};

}  // namespace korval::apps
