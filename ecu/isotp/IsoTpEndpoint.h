// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/EventLoop.h"
#include "ecu/isotp/IsoTpConnection.h"

namespace korval::ecu {

/// One end of an ISO 15765-2 connection in an event loop: sends what its state machine has to send when it
/// is due. Events come from inside its operations and from its timer.
class IsoTpEndpoint {
 public:
  struct Events {
    /// May confirm the frame from inside.
    std::function<void(const CanFrame&)> send_frame;
    /// The bytes are valid during the call.
    std::function<void(base::ByteView)> on_message;
    std::function<void(const IsoTpError&)> on_error;
    /// A message is under way, and something happens to it until then at the latest; now, when the last one
    /// has ended. What is ignored raises nothing.
    std::function<void(base::TimePoint)> on_busy;
    /// The last message is on the bus. May be empty.
    std::function<void()> on_sent = {};
  };

  IsoTpEndpoint(std::shared_ptr<base::EventLoop> loop, const IsoTpParameters& parameters, Events events);

  const IsoTpParameters& Parameters() const { return connection_.Parameters(); }
  /// Sends a message that is not empty, in place of one that is under way.
  void Send(base::ByteView message);
  void FrameArrived(const CanFrame& frame);
  /// Every frame sent so far is on the bus.
  void FramesSent();
  /// Forgets what is under way in both directions.
  void Stop();

 private:
  void DeadlinePassed();
  void MoveOn();
  void SetTimers();
  void TellBusy();
  void Report();

  std::shared_ptr<base::EventLoop> loop_;
  IsoTpConnection connection_;
  Events events_;
  std::unique_ptr<base::Timer> due_;          // for what is sent
  std::unique_ptr<base::Deadline> deadline_;  // for what is waited for
  bool moving_ = false;
  bool busy_ = false;  // as on_busy said
  bool sending_ = false;
};

}  // namespace korval::ecu
