// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "ecu/can/CanFrame.h"

namespace korval::ecu {

/// The seam to a CAN adapter: an opened bus. Runs on the event loop's thread and never waits; destroying it
/// closes it. Frames may come late, when the computer is busy, but what the driver held when a base::Deadline
/// fell due comes before that deadline.
class CanBus {
 public:
  enum class Error {
    kBusOff,         ///< the controller left the bus after too many errors
    kNoAcknowledge,  ///< no other node acknowledges what is sent
    kUnplugged,      ///< the adapter or its driver is gone
    kQueueFull       ///< the adapter dropped the last frame that it had taken
  };
  struct Events {
    std::function<void(const CanFrame&)> on_frame;
    /// One more frame is on the bus, as far as the adapter can tell, in the order in which they were sent.
    std::function<void()> on_sent;
    /// What happened, in a sentence. Queue full ends by itself, an unplugged adapter not before it is opened
    /// anew; the others end with on_recovered.
    std::function<void(Error, const std::string&)> on_error;
    /// The bus has become ready.
    std::function<void()> on_recovered;
  };

  virtual ~CanBus() = default;
  /// Replaces the events; they come from the event loop or from inside Send.
  virtual void SetEvents(Events events) = 0;
  /// False: there is no room for the frame at the moment, and it was not sent.
  virtual bool Send(const CanFrame& frame) = 0;
  /// Whether the bus takes part in the traffic. One that was just opened may still be connecting, or be bus
  /// off as it was left; on_recovered or on_error follows.
  virtual bool IsReady() const = 0;
};

}  // namespace korval::ecu
