// SPDX-License-Identifier: MIT
#include "ecu/isotp/IsoTpEndpoint.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace korval::ecu {

IsoTpEndpoint::IsoTpEndpoint(std::shared_ptr<base::EventLoop> loop, const IsoTpParameters& parameters,
                             Events events)
    : loop_(std::move(loop)),
      connection_(parameters),
      events_(std::move(events)),
      due_(loop_->CreateTimer([this] { MoveOn(); })),
      deadline_(loop_->CreateDeadline([this] { DeadlinePassed(); })) {}

void IsoTpEndpoint::Send(base::ByteView message) {
  connection_.Send(message, loop_->Now());
  sending_ = true;
  MoveOn();
}

void IsoTpEndpoint::FrameArrived(const CanFrame& frame) {
  if (connection_.FrameArrived(frame, loop_->Now())) MoveOn();
}

void IsoTpEndpoint::FramesSent() {
  connection_.FramesSent(loop_->Now());
  MoveOn();
}

void IsoTpEndpoint::Stop() {
  connection_.Stop();
  due_->Stop();
  deadline_->Clear();
  busy_ = false;
  sending_ = false;
}

void IsoTpEndpoint::DeadlinePassed() {
  connection_.TimeElapsed(loop_->Now());
  MoveOn();
}

// A frame that is confirmed from inside its sending brings the next one in the same loop, not in a deeper
// one.
void IsoTpEndpoint::MoveOn() {
  if (moving_) return;
  moving_ = true;
  while (const auto frame = connection_.TakeFrame(loop_->Now())) events_.send_frame(*frame);
  moving_ = false;
  SetTimers();
  TellBusy();
  Report();
}

void IsoTpEndpoint::SetTimers() {
  due_->Stop();
  if (const auto due = connection_.Due()) {
    due_->Start(
        std::chrono::ceil<std::chrono::microseconds>(std::max(*due - loop_->Now(), base::Duration::zero())));
  }
  if (const auto deadline = connection_.Deadline()) {
    deadline_->Set(*deadline);
  } else {
    deadline_->Clear();
  }
}

void IsoTpEndpoint::TellBusy() {
  const auto due = connection_.Due();
  const auto until = due ? due : connection_.Deadline();
  if (!until && !busy_) return;
  busy_ = until.has_value();
  events_.on_busy(until.value_or(loop_->Now()));
}

void IsoTpEndpoint::Report() {
  const auto error = connection_.TakeError();
  const auto message = connection_.TakeMessage();
  const bool has_sent = sending_ && !connection_.IsSending();
  if (has_sent) sending_ = false;
  if (has_sent && !error && events_.on_sent) events_.on_sent();
  if (message) events_.on_message(message->View());
  if (error) events_.on_error(*error);
}

}  // namespace korval::ecu
