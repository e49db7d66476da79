// SPDX-License-Identifier: MIT
#include "ecu/isotp/IsoTpSender.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace korval::ecu {
namespace {

// A block size of 0 asks for everything in one block.
constexpr std::size_t kEndlessBlock = std::numeric_limits<std::size_t>::max();

}  // namespace

void IsoTpSender::Start(base::ByteView message, base::TimePoint now) {
  message_ = base::ByteBuffer(message);
  sent_ = 0;
  sequence_ = 0;
  block_left_ = 0;
  waits_ = 0;
  error_.reset();
  deadline_ = now;
  state_ = State::kFrameDue;
}

std::optional<base::TimePoint> IsoTpSender::Due() const {
  return state_ == State::kFrameDue ? std::optional(deadline_) : std::nullopt;
}

std::optional<base::TimePoint> IsoTpSender::Deadline() const {
  return state_ == State::kIdle || state_ == State::kFrameDue ? std::nullopt : std::optional(deadline_);
}

std::optional<IsoTpPduBytes> IsoTpSender::TakeFrame(base::TimePoint now) {
  if (state_ != State::kFrameDue || now < deadline_) return std::nullopt;
  state_ = State::kFrameOut;
  deadline_ = now + parameters_.n_as;
  return NextFrame();
}

IsoTpPduBytes IsoTpSender::NextFrame() {
  const std::size_t capacity = parameters_.TransmitCapacity();
  const base::ByteView message = message_.View();
  if (message.size() < capacity) {
    sent_ = message.size();
    return IsoTpPduBytes::Single(message);
  }
  if (sent_ == 0) {
    sent_ = FirstFrameBytes(message.size(), capacity);
    return IsoTpPduBytes::First(message, capacity);
  }
  const base::ByteView part = message.subspan(sent_, std::min(capacity - 1, message.size() - sent_));
  sent_ += part.size();
  sequence_ = (sequence_ + 1) & 0x0F;
  if (block_left_ != kEndlessBlock) --block_left_;
  return IsoTpPduBytes::Consecutive(sequence_, part);
}

void IsoTpSender::FrameSent(base::TimePoint now) {
  if (state_ != State::kFrameOut) return;
  if (IsComplete()) {
    state_ = State::kIdle;
  } else if (NeedsFlowControl()) {
    state_ = State::kAwaitFlowControl;
    deadline_ = now + parameters_.n_bs;
  } else {
    state_ = State::kFrameDue;
    deadline_ = now + separation_;
  }
}

void IsoTpSender::FlowControlArrived(const IsoTpPdu& pdu, base::TimePoint now) {
  // The answer may overtake the adapter's confirmation of the frame that it answers.
  if (state_ == State::kFrameOut && NeedsFlowControl()) FrameSent(now);
  if (state_ != State::kAwaitFlowControl) return;
  switch (static_cast<FlowStatus>(pdu.status)) {
    case FlowStatus::kContinue:
      return Continue(pdu, now);
    case FlowStatus::kWait:
      return Wait(now);
    case FlowStatus::kOverflow:
      return Fail(IsoTpResult::kOverflow, "the receiver has no room for so many");
  }
  Fail(IsoTpResult::kInvalidStatus,
       "flow control with the reserved status " + base::HexText(std::array{pdu.status}));
}

void IsoTpSender::Continue(const IsoTpPdu& pdu, base::TimePoint now) {
  block_left_ = pdu.block_size == 0 ? kEndlessBlock : pdu.block_size;
  separation_ = parameters_.separation.value_or(SeparationOf(pdu.st_min));
  waits_ = 0;
  state_ = State::kFrameDue;
  deadline_ = now;
}

void IsoTpSender::Wait(base::TimePoint now) {
  if (++waits_ > parameters_.most_waits) {
    return Fail(IsoTpResult::kTooManyWaits,
                "more than " + std::to_string(parameters_.most_waits) + " wait frames in a row");
  }
  deadline_ = now + parameters_.n_bs;
}

void IsoTpSender::TimeElapsed(base::TimePoint now) {
  if (state_ == State::kIdle || now < deadline_) return;
  if (state_ == State::kFrameOut) {
    Fail(IsoTpResult::kTimeoutA,
         "a frame did not get onto the bus within " + TimeText(parameters_.n_as) + " (N_As)");
  } else if (state_ == State::kAwaitFlowControl) {
    Fail(IsoTpResult::kTimeoutBs, "no flow control within " + TimeText(parameters_.n_bs) + " (N_Bs)");
  }
}

std::optional<IsoTpError> IsoTpSender::TakeError() { return std::exchange(error_, std::nullopt); }

void IsoTpSender::Fail(IsoTpResult result, const std::string& what) {
  state_ = State::kIdle;
  error_ = {result, "sending ended after " + std::to_string(sent_) + " of " +
                        std::to_string(message_.Length()) + " bytes: " + what};
}

}  // namespace korval::ecu
