// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/link/LinkOffer.h"

namespace korval::ecu {

/// The seam between the diagnostic services and what carries them: whole messages, byte 1 the service, go to
/// one ECU function and come back. A link runs on the event loop's thread, never waits and may raise its
/// events from inside its own operations.
class MessageLink {
 public:
  struct Events {
    std::function<void()> on_connected;
    /// The bytes are valid during the call.
    std::function<void(base::ByteView)> on_message;
    /// The last message is out.
    std::function<void()> on_sent;
    /// The start, the last message or the link as a whole failed: a number of ErrorNumbers.h, and what
    /// happened in a sentence.
    std::function<void(std::int32_t, const std::string&)> on_failure;
    /// A part of the request is going out or a part of the answer is coming in, and that takes until then at
    /// the latest: the time in which the ECU answers counts from there. A link whose messages take no time
    /// worth mentioning need not raise it.
    std::function<void(base::TimePoint)> on_busy = {};
    /// A part of the answer is coming in, until then at the latest; none: no longer. Whoever waits for the
    /// answer does not give it up before. A link raises this or on_busy for what comes in.
    std::function<void(std::optional<base::TimePoint>)> on_receiving = {};
  };

  virtual ~MessageLink() = default;
  virtual void SetEvents(Events events) = 0;
  /// Starts the communication with the ECU, anew if it stands; ends with on_connected or on_failure.
  virtual void Connect() = 0;
  /// Sends a message; the bytes are valid during the call.
  virtual void Send(base::ByteView message) = 0;
  /// The exchange of the last message is over: nothing is awaited until the next Send, and what arrives is
  /// for somebody else.
  virtual void Rest() {}
  /// Nothing is awaited for a while, then the message will be sent once more: who shares the line may have
  /// it.
  virtual void Pause() {}
  /// What the link knows of why no answer has come to the last message, in a sentence; empty: nothing.
  virtual std::string WhyNoAnswer() const { return {}; }
  /// Ends the communication. No event comes afterwards until the next Connect.
  virtual void Close() = 0;
  virtual LinkOffer Offer() const { return {}; }
  /// Whether the communication stands after a failure 2000 or 2003: that was the last message's alone, and it
  /// may be sent again.
  virtual bool Stands() const { return true; }
};

}  // namespace korval::ecu
