// SPDX-License-Identifier: MIT
#include "ecu/isotp/IsoTpReceiver.h"

#include <algorithm>
#include <utility>

namespace korval::ecu {

void IsoTpReceiver::FrameArrived(const IsoTpPdu& pdu, base::TimePoint now) {
  switch (pdu.type) {
    case IsoTpPdu::Type::kSingle:
      return Complete(pdu.data);
    case IsoTpPdu::Type::kFirst:
      return Begin(pdu, now);
    case IsoTpPdu::Type::kConsecutive:
      return Consecutive(pdu, now);
    case IsoTpPdu::Type::kFlowControl:
      return;  // the sender's
  }
}

void IsoTpReceiver::Complete(base::ByteView message) {
  state_ = State::kIdle;
  message_ = base::ByteBuffer(message);
}

void IsoTpReceiver::Begin(const IsoTpPdu& pdu, base::TimePoint now) {
  length_ = pdu.length;
  bytes_ = base::ByteBuffer(pdu.data);
  sequence_ = 1;
  Answer(length_ > parameters_.longest_message ? FlowStatus::kOverflow : FlowStatus::kContinue, now);
}

void IsoTpReceiver::Answer(FlowStatus status, base::TimePoint now) {
  status_ = status;
  state_ = State::kFlowControlDue;
  deadline_ = now + parameters_.n_br;
}

std::optional<IsoTpPduBytes> IsoTpReceiver::TakeFrame(base::TimePoint now) {
  if (state_ != State::kFlowControlDue || now < deadline_) return std::nullopt;
  if (status_ == FlowStatus::kOverflow) {
    Fail(IsoTpResult::kTooLong, "at most " + std::to_string(parameters_.longest_message) + " are taken");
  } else {
    state_ = State::kFlowControlOut;
    block_left_ = parameters_.block_size;
    deadline_ = now + parameters_.n_ar;
  }
  return IsoTpPduBytes::FlowControl(status_, parameters_.block_size, StMinOf(parameters_.st_min));
}

void IsoTpReceiver::FrameSent(base::TimePoint now) {
  if (state_ != State::kFlowControlOut) return;
  state_ = State::kAwaitConsecutive;
  deadline_ = now + parameters_.n_cr;
}

void IsoTpReceiver::Consecutive(const IsoTpPdu& pdu, base::TimePoint now) {
  // It may overtake the adapter's confirmation of the flow control.
  FrameSent(now);
  if (state_ != State::kAwaitConsecutive) return;
  const std::size_t expected = std::min(parameters_.ReceiveCapacity() - 1, length_ - bytes_.Length());
  if (pdu.data.size() < expected) return;  // cut short
  if (pdu.sequence != sequence_) {
    return Fail(IsoTpResult::kWrongSequence, "consecutive frame " + std::to_string(pdu.sequence) +
                                                 " came instead of " + std::to_string(sequence_));
  }
  sequence_ = (sequence_ + 1) & 0x0F;
  bytes_.Append(pdu.data.first(expected));
  deadline_ = now + parameters_.n_cr;
  if (bytes_.Length() == length_) {
    state_ = State::kIdle;
    message_ = std::move(bytes_);
  } else if (block_left_ > 0 && --block_left_ == 0) {
    Answer(FlowStatus::kContinue, now);
  }
}

std::optional<base::TimePoint> IsoTpReceiver::Due() const {
  return state_ == State::kFlowControlDue ? std::optional(deadline_) : std::nullopt;
}

std::optional<base::TimePoint> IsoTpReceiver::Deadline() const {
  return state_ == State::kIdle || state_ == State::kFlowControlDue ? std::nullopt : std::optional(deadline_);
}

void IsoTpReceiver::TimeElapsed(base::TimePoint now) {
  if (state_ == State::kIdle || now < deadline_) return;
  if (state_ == State::kFlowControlOut) {
    Fail(IsoTpResult::kTimeoutA,
         "the flow control did not get onto the bus within " + TimeText(parameters_.n_ar) + " (N_Ar)");
  } else if (state_ == State::kAwaitConsecutive) {
    Fail(IsoTpResult::kTimeoutCr, "no consecutive frame within " + TimeText(parameters_.n_cr) + " (N_Cr)");
  }
}

std::optional<base::ByteBuffer> IsoTpReceiver::TakeMessage() { return std::exchange(message_, std::nullopt); }

std::optional<IsoTpError> IsoTpReceiver::TakeError() { return std::exchange(error_, std::nullopt); }

void IsoTpReceiver::Fail(IsoTpResult result, const std::string& what) {
  state_ = State::kIdle;
  error_ = {result, "reception ended after " + std::to_string(bytes_.Length()) + " of " +
                        std::to_string(length_) + " bytes: " + what};
}

}  // namespace korval::ecu
