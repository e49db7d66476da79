// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

#include "base/ByteBuffer.h"

namespace korval::client {

/// A line to the server: TCP or serial, or a scripted one in a test.
class Channel {
 public:
  virtual ~Channel() = default;
  /// Sends the bytes as they are, and drops what has come in unasked: it answers an earlier request.
  virtual void Send(base::ByteView frame) = 0;
  /// Everything received up to the moment when a whole frame is there, by its length word; the frame is not
  /// checked. Keeps Qt's event loop running while it waits. Raises LinkError when no frame is whole in time,
  /// or the line goes down.
  virtual base::ByteBuffer Receive(std::chrono::milliseconds timeout) = 0;
};

}  // namespace korval::client
