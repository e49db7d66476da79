// SPDX-License-Identifier: MIT
#include "ecu/kline/KLineDriver.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/Failure.h"
#include "ecu/description/ErrorNumbers.h"

namespace korval::ecu {

KLineDriver::KLineDriver(std::shared_ptr<base::EventLoop> loop, std::shared_ptr<SharedKLine> line,
                         const FunctionDescription& function)
    : loop_(std::move(loop)),
      line_(std::move(line)),
      baud_(function.baud),
      has_start_(function.init != FunctionDescription::Init::kNone),
      longest_turn_(function.timing.Value(&Timing::pending_cap)),
      tester_(function),
      due_(loop_->CreateTimer([this] { DueNow(); })),
      deadline_(loop_->CreateDeadline([this] { DeadlinePassed(); })) {}

void KLineDriver::Connect() {
  listening_ = true;
  Claim(Task::kConnect);
}

void KLineDriver::Send(base::ByteView message) {
  message_ = base::ByteBuffer(message);
  Claim(Task::kSend);
}

void KLineDriver::Close() {
  if (!std::exchange(listening_, false)) return;
  due_->Stop();
  deadline_->Clear();
  if (tester_.IsConnected()) return Claim(Task::kStop);
  tester_.Abandon();
  line_->Release(this, tester_.QuietSince());
}

base::TimePoint KLineDriver::LongestSilence() const {
  return has_start_ ? tester_.ActiveTiming().p3_max : base::TimePoint::max();
}

void KLineDriver::Claim(Task task) {
  task_ = task;
  if (listening_ && !line_->IsFree()) events_.on_busy(loop_->Now() + longest_turn_);
  line_->Claim(shared_from_this());
}

void KLineDriver::Granted() {
  const base::TimePoint now = loop_->Now();
  try {
    line_->Prepare(baud_);
  } catch (const base::Failure& failure) {
    return GiveUp(failure.Number() == kInterfaceRefused ? kInterfaceRefused : kLinkLost,
                  failure.Description());
  }
  if (task_ == Task::kConnect) tester_.Connect(now, line_->QuietSince(), line_->SetBreak(false));
  if (task_ == Task::kSend) tester_.Send(message_.View(), now, line_->QuietSince());
  if (task_ == Task::kStop) tester_.Stop(now, line_->QuietSince());
  MoveOn();
}

void KLineDriver::BytesArrived(base::ByteView bytes) {
  const auto self = shared_from_this();
  tester_.BytesArrived(bytes, loop_->Now());
  MoveOn();
}

void KLineDriver::DueNow() {
  const auto self = shared_from_this();
  tester_.MoveOn(loop_->Now());
  MoveOn();
}

void KLineDriver::DeadlinePassed() {
  const auto self = shared_from_this();
  tester_.TimeElapsed(loop_->Now());
  MoveOn();
}

void KLineDriver::Lost(const std::string& why) { GiveUp(kLinkLost, why); }

void KLineDriver::GiveUp(std::int32_t number, const std::string& why) {
  const auto self = shared_from_this();
  due_->Stop();
  deadline_->Clear();
  tester_.Abandon();
  line_->Release(this, tester_.QuietSince());
  if (listening_) events_.on_failure(number, why);
}

// A wire may return an echo from inside Write.
void KLineDriver::MoveOn() {
  if (moving_) return;
  moving_ = true;
  while (const auto action = tester_.TakeAction()) Perform(*action);
  moving_ = false;
  Report();
}

void KLineDriver::Perform(const KLineTester::Action& action) {
  if (action.kind != KLineTester::Action::Kind::kWrite) {
    line_->SetBreak(action.kind == KLineTester::Action::Kind::kPullLow);
    return;
  }
  line_->Write(action.bytes.View());
  tester_.Written(loop_->Now());
}

void KLineDriver::SetTimers() {
  due_->Stop();
  if (const auto due = tester_.Due()) {
    due_->Start(
        std::chrono::ceil<std::chrono::microseconds>(std::max(*due - loop_->Now(), base::TimePoint::zero())));
  }
  if (const auto deadline = tester_.Deadline()) {
    deadline_->Set(*deadline);
  } else {
    deadline_->Clear();
  }
}

// The line is released first: who hears of an answer may have the next request.
void KLineDriver::Report() {
  const auto self = shared_from_this();
  SetTimers();
  const auto due = tester_.Due();
  const base::TimePoint busy_until = (due ? due : tester_.Deadline()).value_or(loop_->Now());
  if (!tester_.IsBusy()) line_->Release(this, tester_.QuietSince());
  if (listening_) events_.on_busy(busy_until);
  while (listening_) {
    const auto event = tester_.TakeEvent();
    if (!event) break;
    Raise(*event);
  }
}

void KLineDriver::Raise(const KLineTester::Event& event) {
  switch (event.kind) {
    case KLineTester::Event::Kind::kConnected:
      return events_.on_connected();
    case KLineTester::Event::Kind::kSent:
      return events_.on_sent();
    case KLineTester::Event::Kind::kMessage:
      return events_.on_message(event.message.View());
    case KLineTester::Event::Kind::kFailure:
      return events_.on_failure(event.number, event.text);
  }
}

}  // namespace korval::ecu
