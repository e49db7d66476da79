// SPDX-License-Identifier: MIT
#include "ecu/kline/KLineDriver.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"

namespace korval::ecu {

KLineDriver::KLineDriver(std::shared_ptr<base::EventLoop> loop, std::shared_ptr<SharedKLine> line,
                         const FunctionDescription& function, const ServiceNames& names, Note note)
    : loop_(std::move(loop)),
      line_(std::move(line)),
      function_(function),
      tester_(function, names),
      note_(std::move(note)),
      due_(loop_->CreateTimer([this] { DueNow(); })),
      deadline_(loop_->CreateDeadline([this] { DeadlinePassed(); })) {}

void KLineDriver::Connect() {
  listening_ = true;
  Claim(Task::kConnect);
}

// Who waits for the line comes first when the last message is sent once more.
void KLineDriver::Send(base::ByteView message) {
  Rest();
  message_ = base::ByteBuffer(message);
  Claim(Task::kSend);
}

void KLineDriver::Rest() {
  const auto self = shared_from_this();
  tester_.Rest();
  if (tester_.IsBusy()) return;
  SetTimers();
  line_->Release(this, tester_.QuietSince());
}

void KLineDriver::Close() {
  if (!std::exchange(listening_, false)) return;
  due_->Stop();
  deadline_->Clear();
  if (tester_.IsConnected()) return Claim(Task::kStop);
  tester_.Abandon();
  line_->Release(this, tester_.QuietSince());
}

base::Duration KLineDriver::LongestSilence() const {
  const bool has_start = function_.KLine().init != KLineDescription::Init::kNone;
  return has_start ? tester_.ActiveTiming().p3_max : base::Duration::max();
}

void KLineDriver::Claim(Task task) {
  task_ = task;
  if (listening_ && !line_->IsFree())
    events_.on_busy(loop_->Now() + function_.timing.Value(&Timing::pending_cap));
  line_->Claim(shared_from_this());
}

void KLineDriver::Granted() {
  const base::TimePoint now = loop_->Now();
  try {
    Prepare();
  } catch (const base::Failure& failure) {
    return GiveUp(failure.Number() == kInterfaceRefused ? kInterfaceRefused : kLinkLost,
                  failure.Description());
  }
  if (task_ == Task::kConnect) {
    means_ = FindMeans();
    tester_.Connect(now, line_->QuietSince(), means_, line_->TakeStopped(function_.address));
  }
  if (task_ == Task::kSend) tester_.Send(message_.View(), now, line_->QuietSince());
  if (task_ == Task::kStop) tester_.Stop(now, line_->QuietSince());
  MoveOn();
}

// Where RTS drives the L line, it rests where that is high.
void KLineDriver::Prepare() {
  KLineSettings settings{task_ == Task::kConnect ? function_.KLine().baud : tester_.Baud(),
                         function_.KLine().rts, function_.KLine().dtr};
  if (function_.KLine().l_line != KLineDescription::LLine::kNone) {
    settings.rts = function_.KLine().l_line == KLineDescription::LLine::kRtsInverted;
  }
  const bool has_lines = line_->Prepare(settings);
  if (std::exchange(has_lines_, has_lines) && !has_lines && note_) {
    note_(function_.ecu + ": the adapter's RTS and DTR cannot be set (Rts, Dtr, LLine)");
  }
}

WakeUp::Means KLineDriver::FindMeans() {
  using Choice = KLineDescription::WakeUp;
  const bool has_break = line_->SetBreak(false);
  if (function_.KLine().wake_up == Choice::kByte) return WakeUp::Means::kByte;
  if (!has_break) return WakeUp::Means::kNone;
  const bool by_break = function_.KLine().wake_up == Choice::kBreak || line_->HoldsBreak();
  return by_break ? WakeUp::Means::kBreak : WakeUp::Means::kByte;
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
  try {
    while (const auto action = tester_.TakeAction()) Perform(*action);
  } catch (const base::Failure& failure) {
    moving_ = false;
    return GiveUp(kInterfaceRefused, failure.Description());
  }
  moving_ = false;
  Report();
}

void KLineDriver::Perform(const KLineTester::Action& action) {
  switch (action.kind) {
    case KLineTester::Action::Kind::kPullLow:
      return SetLevel(true);
    case KLineTester::Action::Kind::kLetRise:
      return SetLevel(false);
    case KLineTester::Action::Kind::kSetSpeed:
      return line_->SetSpeed(action.baud);
    case KLineTester::Action::Kind::kWrite:
      line_->Write(action.bytes.View());
      return tester_.Written(loop_->Now());
  }
}

void KLineDriver::SetLevel(bool low) {
  if (means_ == WakeUp::Means::kBreak) line_->SetBreak(low);
  const auto l_line = function_.KLine().l_line;
  if (l_line == KLineDescription::LLine::kNone) return;
  line_->SetRts(low == (l_line == KLineDescription::LLine::kRts));
}

void KLineDriver::SetTimers() {
  due_->Stop();
  if (const auto due = tester_.Due()) {
    due_->Start(
        std::chrono::ceil<std::chrono::microseconds>(std::max(*due - loop_->Now(), base::Duration::zero())));
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
  if (tester_.TakeStopped()) line_->NoteStopped(function_.address);
  if (!tester_.IsBusy()) line_->Release(this, tester_.QuietSince());
  TellHowLong();
  while (listening_) {
    const auto event = tester_.TakeEvent();
    if (!event) break;
    Raise(*event);
  }
}

void KLineDriver::TellHowLong() {
  const auto sending_until = tester_.SendingUntil();
  if (listening_ && sending_until) events_.on_busy(*sending_until);
  if (listening_) events_.on_receiving(tester_.ReceivingUntil());
}

void KLineDriver::Raise(const KLineTester::Event& event) {
  switch (event.kind) {
    case KLineTester::Event::Kind::kConnected:
      return events_.on_connected();
    case KLineTester::Event::Kind::kSent:
      return events_.on_sent();
    case KLineTester::Event::Kind::kMessage:
      return events_.on_message(event.message.View());
    case KLineTester::Event::Kind::kNote:
      return note_ ? note_(event.text) : void();
    case KLineTester::Event::Kind::kFailure:
      return events_.on_failure(event.number, event.text);
  }
}

}  // namespace korval::ecu
