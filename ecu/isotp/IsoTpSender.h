// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/isotp/IsoTpError.h"
#include "ecu/isotp/IsoTpParameters.h"
#include "ecu/isotp/IsoTpPdu.h"

namespace korval::ecu {

/// The sending side of ISO 15765-2 for one pair of addresses. A pure state machine: events and the time go
/// in, frames, an outcome and a deadline come out. After each event TakeFrame says what is to be sent.
class IsoTpSender {
 public:
  /// Keeps a reference to `parameters`.
  explicit IsoTpSender(const IsoTpParameters& parameters) : parameters_(parameters) {}

  /// Sends `message` (1 to 2^32 - 1 bytes) in place of one that is under way.
  void Start(base::ByteView message, base::TimePoint now);
  void Stop() { state_ = State::kIdle; }
  bool IsBusy() const { return state_ != State::kIdle; }

  /// A flow control; ignored when none is waited for.
  void FlowControlArrived(const IsoTpPdu& pdu, base::TimePoint now);
  /// What TakeFrame gave last is on the bus.
  void FrameSent(base::TimePoint now);
  void TimeElapsed(base::TimePoint now);

  /// The frame that is due, once.
  std::optional<IsoTpPduBytes> TakeFrame(base::TimePoint now);
  /// When TakeFrame is due; none when there is nothing to send.
  std::optional<base::TimePoint> Due() const;
  /// When TimeElapsed is due; none while nothing is waited for.
  std::optional<base::TimePoint> Deadline() const;

  /// What ended the transfer, once.
  std::optional<IsoTpError> TakeError();

 private:
  enum class State { kIdle, kFrameDue, kFrameOut, kAwaitFlowControl };

  bool IsComplete() const { return sent_ == message_.Length(); }
  bool NeedsFlowControl() const { return !IsComplete() && block_left_ == 0; }
  IsoTpPduBytes NextFrame();
  void Continue(const IsoTpPdu& pdu, base::TimePoint now);
  void Wait(base::TimePoint now);
  void Fail(IsoTpResult result, const std::string& what);

  const IsoTpParameters& parameters_;
  State state_ = State::kIdle;
  base::ByteBuffer message_;
  std::size_t sent_ = 0;
  std::uint8_t sequence_ = 0;
  std::size_t block_left_ = 0;  // consecutive frames until the next flow control
  base::Duration separation_{};
  std::int32_t waits_ = 0;
  base::TimePoint deadline_{};
  std::optional<IsoTpError> error_;
};

}  // namespace korval::ecu
