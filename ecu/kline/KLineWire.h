// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/ByteBuffer.h"

namespace korval::ecu {

/// The seam to the adapter on a K-line: a serial line with 8 data bits, no parity and one stop bit. Runs on
/// the event loop's thread and never waits; destroying it closes it. Bytes may come late, when the computer
/// is busy, but what the driver held when a base::Deadline fell due comes before that deadline.
class KLineWire {
 public:
  struct Events {
    /// Everything heard on the line, what was written included where the adapter returns it. The bytes are
    /// valid during the call.
    std::function<void(base::ByteView)> on_bytes;
    /// The adapter is gone, and why, in a sentence. The wire is closed; it can be opened again.
    std::function<void(const std::string& why)> on_lost;
  };

  virtual ~KLineWire() = default;
  /// Replaces the events; they come from the event loop or from inside an operation.
  virtual void SetEvents(Events events) = 0;
  /// Opens the line at so many bit/s; one that is open is set to that speed. Raises Failure that says why not
  /// and what to do; it has the number 1002 when the line is there and refuses the speed. The line is closed
  /// then.
  virtual void Open(std::int32_t baud) = 0;
  /// Pulls the line low, or lets it rise. False: this line cannot be pulled low.
  virtual bool SetBreak(bool low) = 0;
  /// False: the adapter keeps the line low for a time of its own, whatever it is told.
  virtual bool HoldsBreak() const { return true; }
  /// Sets the adapter's lines RTS and DTR; none: it stays as it is. False: it has no such lines.
  virtual bool SetModemLines(std::optional<bool> rts, std::optional<bool> dtr) = 0;
  /// Sends the bytes without gaps.
  virtual void Write(base::ByteView bytes) = 0;
  virtual void Close() = 0;
};

}  // namespace korval::ecu
