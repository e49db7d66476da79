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

/// The receiving side of ISO 15765-2 for one pair of addresses. A pure state machine: events and the time go
/// in, flow controls, messages, errors and a deadline come out. What arrives unexpectedly is treated as
/// the standard has it: a single or first frame ends the message under way and starts its own, anything else
/// is ignored.
class IsoTpReceiver {
 public:
  /// Keeps a reference to `parameters`.
  explicit IsoTpReceiver(const IsoTpParameters& parameters) : parameters_(parameters) {}

  /// A single, first or consecutive frame.
  void FrameArrived(const IsoTpPdu& pdu, base::TimePoint now);
  /// What TakeFrame gave last is on the bus.
  void FrameSent(base::TimePoint now);
  void TimeElapsed(base::TimePoint now);
  /// Forgets a message under way.
  void Stop() { state_ = State::kIdle; }
  bool IsBusy() const { return state_ != State::kIdle; }

  /// The flow control that is due, once.
  std::optional<IsoTpPduBytes> TakeFrame(base::TimePoint now);
  /// When TakeFrame is due; none when there is nothing to send.
  std::optional<base::TimePoint> Due() const;
  /// When TimeElapsed is due; none while nothing is waited for.
  std::optional<base::TimePoint> Deadline() const;

  /// The message that came in, once.
  std::optional<base::ByteBuffer> TakeMessage();
  /// What ended a message under way, once.
  std::optional<IsoTpError> TakeError();

 private:
  enum class State { kIdle, kFlowControlDue, kFlowControlOut, kAwaitConsecutive };

  void Begin(const IsoTpPdu& pdu, base::TimePoint now);
  void Consecutive(const IsoTpPdu& pdu, base::TimePoint now);
  void Complete(base::ByteView message);
  void Answer(FlowStatus status, base::TimePoint now);
  void Fail(IsoTpResult result, const std::string& what);

  const IsoTpParameters& parameters_;
  State state_ = State::kIdle;
  FlowStatus status_ = FlowStatus::kContinue;
  base::ByteBuffer bytes_;
  std::size_t length_ = 0;
  std::uint8_t sequence_ = 0;   // the next one
  std::size_t block_left_ = 0;  // consecutive frames until the next flow control
  base::TimePoint deadline_{};
  std::optional<base::ByteBuffer> message_;
  std::optional<IsoTpError> error_;
};

}  // namespace korval::ecu
