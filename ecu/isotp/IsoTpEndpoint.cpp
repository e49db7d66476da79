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
      timer_(loop_->CreateTimer([this] { TimerFired(); })) {}

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
  timer_->Stop();
  busy_ = false;
  sending_ = false;
}

void IsoTpEndpoint::TimerFired() {
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
  SetTimer();
  TellBusy();
  Report();
}

void IsoTpEndpoint::SetTimer() {
  const base::TimePoint now = loop_->Now();
  const auto deadline = connection_.Deadline();
  timer_->Stop();
  if (deadline) {
    timer_->Start(
        std::chrono::ceil<std::chrono::microseconds>(std::max(*deadline - now, base::TimePoint(0))));
  }
}

void IsoTpEndpoint::TellBusy() {
  const auto deadline = connection_.Deadline();
  if (!deadline && !busy_) return;
  busy_ = deadline.has_value();
  events_.on_busy(deadline.value_or(loop_->Now()));
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
