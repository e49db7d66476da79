// SPDX-License-Identifier: MIT
#include "ecu/service/Requester.h"

#include <string>
#include <utility>

#include "base/ErrorNumbers.h"

namespace korval::ecu {

Requester::Requester(std::shared_ptr<base::EventLoop> loop, MessageLink& link,
                     std::shared_ptr<const ErrorTable> errors, std::function<void(PendingRequest&)> on_end)
    : loop_(std::move(loop)), link_(link), errors_(std::move(errors)), on_end_(std::move(on_end)) {}

std::shared_ptr<PendingRequest> Requester::Start(PendingRequest request) {
  auto pending = std::make_shared<PendingRequest>(std::move(request));
  current_ = pending;
  Transmit(pending);
  return pending;
}

void Requester::Drop() {
  current_.reset();
  deadline_.reset();
}

void Requester::MessageArrived(base::ByteView message) {
  if (!current_) return;  // late or doubled
  current_->exchange.MessageArrived(message, loop_->Now());
  if (current_->exchange.IsPausing()) link_.Pause();
  Settle();
}

void Requester::Sent() {
  if (!current_) return;
  current_->exchange.Sent();
  Settle();
}

void Requester::LinkBusy(base::TimePoint until) {
  if (!current_) return;
  current_->exchange.LinkBusy(until);
  Settle();
}

void Requester::Receiving(std::optional<base::TimePoint> until) {
  if (!current_) return;
  current_->exchange.Receiving(until);
  Settle();
}

void Requester::LinkFailed(base::Failure failure, bool of_the_answer) {
  if (!current_) return;
  if (of_the_answer && current_->exchange.AskAgain(loop_->Now())) return Transmit(current_);
  current_->failure = std::move(failure);
  Finish();
}

void Requester::Transmit(const std::shared_ptr<PendingRequest>& pending) {
  try {
    link_.Send(pending->request.View());
  } catch (const base::Failure& failure) {
    if (current_ == pending) pending->failure = failure;
  }
  Settle();
}

// Finishes the exchange that is under way, or sets the deadline of what it waits for.
void Requester::Settle() {
  if (!current_) return;
  if (current_->failure || current_->exchange.CurrentState() != Exchange::State::kWaiting) return Finish();
  if (!deadline_) deadline_ = loop_->CreateDeadline([this] { DeadlinePassed(); });
  deadline_->Set(current_->exchange.Deadline());
}

void Requester::Finish() {
  const auto pending = std::exchange(current_, nullptr);
  pending->done = true;
  if (deadline_) deadline_->Clear();
  link_.Rest();
  on_end_(*pending);
}

void Requester::DeadlinePassed() {
  if (!current_) return;
  const auto pending = current_;
  pending->exchange.TimeElapsed(loop_->Now());
  if (pending->exchange.TakeRepeat()) return Transmit(pending);
  if (pending->exchange.CurrentState() == Exchange::State::kSilent) {
    if (const std::string why = link_.WhyNoAnswer(); !why.empty()) {
      pending->failure = errors_->MakeFailure(kNoAnswer, why);
    }
  }
  Settle();
}

}  // namespace korval::ecu
