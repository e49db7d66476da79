// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "base/ByteBuffer.h"
#include "host/power/PowerControl.h"
#include "host/trace/TraceConsole.h"
#include "protocol/Dispatcher.h"
#include "protocol/PowerRequest.h"
#include "protocol/SessionServices.h"
#include "protocol/SessionState.h"

namespace korval::protocol {

/// What both transports do with a complete request, and the one frame buffer they share. Bytes of one
/// transport that arrive while the other's command waits overwrite the buffer: the serial line has no
/// guard against it. Only the buffer's content suffers: a command works on a copy of its code and parameters.
class CommandRunner {
 public:
  struct Outcome {
    std::uint16_t code = 0;  // of the command
    std::int32_t status = 0;
    base::ByteBuffer data;
  };

  /// The arguments outlive the runner. `power_request` is set by commands and acted on here.
  CommandRunner(Dispatcher& dispatcher, SessionState& state, SessionServices& services,
                host::TraceConsole& console, host::PowerControl& power)
      : dispatcher_(dispatcher), state_(state), services_(services), console_(console), power_(power) {}

  base::ByteBuffer& FrameBuffer() { return frame_; }
  PowerRequest& PendingPowerRequest() { return power_request_; }

  /// Traces a wrong checksum. The frame that the length field spans is wholly in the buffer.
  bool VerifyChecksum();
  /// Dispatches the request that is in the frame buffer when the task begins.
  base::Task<Outcome> Run();
  /// Makes the frame buffer the reply, whatever it holds by now.
  void Finish(const Outcome& outcome);

  /// First half of a power request, once its reply was sent: releases what the client used. True when
  /// there was a diagnosis object, whose client's socket is then to be dropped.
  bool ReleaseForPowerRequest(bool close_host_session);
  /// Second half: reboots or shuts down the host.
  void ActOnPowerRequest();
  /// Forgets a power request whose reply was never sent, and says so.
  void DropPowerRequest();
  /// Forgets a power request of a client at `address` that is not to be trusted with it, and says so.
  void RefusePowerRequest(const std::string& address);

 private:
  Dispatcher& dispatcher_;
  SessionState& state_;
  SessionServices& services_;
  host::TraceConsole& console_;
  host::PowerControl& power_;
  base::ByteBuffer frame_;
  PowerRequest power_request_ = PowerRequest::kNone;
};

}  // namespace korval::protocol
