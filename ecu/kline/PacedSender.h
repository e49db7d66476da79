// SPDX-License-Identifier: MIT
#pragma once

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"

namespace korval::ecu {

/// Sends bytes with silence between them (P4), or all at once without.
class PacedSender {
 public:
  /// `byte_time`: how long a byte is on the line.
  void Start(base::ByteBuffer bytes, base::TimePoint now, base::Duration byte_time, base::Duration gap);
  void Stop() { sent_ = bytes_.Length(); }
  /// The gap behind what was taken last has become so much longer than it was to be, and more bytes are to
  /// come.
  bool IsLate(base::TimePoint now, base::Duration by) const {
    return sent_ != 0 && !IsDone() && now > due_ + by;
  }
  /// What is to be written now; empty: nothing yet. Valid until the next Start.
  base::ByteView Take(base::TimePoint now);
  /// What was taken last has been written only now.
  void Written(base::TimePoint now);
  bool IsDone() const { return sent_ == bytes_.Length(); }
  /// When the next byte is due.
  base::TimePoint Due() const { return due_; }
  /// When what was taken so far has left.
  base::TimePoint End() const { return end_; }

 private:
  base::ByteBuffer bytes_;
  std::size_t sent_ = 0;
  std::size_t last_count_ = 0;
  base::Duration byte_time_{};
  base::Duration gap_{};
  base::TimePoint due_{};
  base::TimePoint end_{};
};

}  // namespace korval::ecu
