// SPDX-License-Identifier: MIT
#include "ecu/kline/KLineTester.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kStopCommunication = 0x82;
constexpr HeaderForm kStartForm{true, false};
// After so many interrupted attempts the bytes go without gaps: that is one order to the adapter, and most
// ECUs bear it.
constexpr int kPacedAttempts = 3;
// Wake-ups of one initialisation.
constexpr int kMostHoldUps = 20;
// By then an ECU has forgotten what it has of a request: it waits for 20 ms (P4max).
constexpr Milliseconds kForgotten{100};
constexpr char kHeldUp[] =
    "the computer is too busy to wake the ECU up in time: relieve it, or start the server with --realtime";

template <typename Item>
std::optional<Item> TakeFirst(std::deque<Item>& items) {
  if (items.empty()) return std::nullopt;
  std::optional<Item> first(std::move(items.front()));
  items.pop_front();
  return first;
}

}  // namespace

KLineTester::KLineTester(const FunctionDescription& function, const ServiceNames& names)
    : function_(function),
      names_(names),
      agreement_(function),
      echo_(function.KLine().echo),
      exchange_({function.address, function.tester, false, function.KLine().functional},
                agreement_.ByteTime(), echo_) {}

void KLineTester::Abandon() {
  phase_ = Phase::kIdle;
  connected_ = false;
  actions_.clear();
  events_.clear();
}

void KLineTester::Connect(base::TimePoint now, base::TimePoint quiet_since, WakeUp::Means means,
                          bool was_stopped) {
  Abandon();
  means_ = means;
  echo_ = EchoFilter(function_.KLine().echo);
  agreement_.Reset();
  if (function_.KLine().init == KLineDescription::Init::kNone) {
    connected_ = true;
    events_.push_back({Event::Kind::kConnected, {}});
    return;
  }
  const bool soon = was_stopped && function_.KLine().init == KLineDescription::Init::kFast;
  const base::Duration silence = soon ? agreement_.Times().p3_min : Time(&Timing::t_idle);
  Begin(Purpose::kInitialisation, silence, now, quiet_since);
}

void KLineTester::Send(base::ByteView message, base::TimePoint now, base::TimePoint quiet_since) {
  message_ = base::ByteBuffer(message);
  if (!agreement_.FormFor(message.size())) {
    return events_.push_back({Event::Kind::kFailure,
                              {},
                              kValueRefused,
                              "a request of " + std::to_string(message.size()) +
                                  " bytes is longer than the ECU takes on the K-line"});
  }
  Begin(Purpose::kRequest, agreement_.Times().p3_min, now, quiet_since);
}

void KLineTester::Stop(base::TimePoint now, base::TimePoint quiet_since) {
  const bool was_connected = connected_;
  Abandon();
  if (!was_connected || function_.KLine().init == KLineDescription::Init::kNone) return;
  message_ = {kStopCommunication};
  Begin(Purpose::kStop, agreement_.Times().p3_min, now, quiet_since);
}

// What has come behind the answer is for nobody.
void KLineTester::Rest() {
  if (purpose_ != Purpose::kRequest) return;
  phase_ = Phase::kIdle;
  std::erase_if(events_, [](const Event& event) { return event.kind != Event::Kind::kNote; });
}

void KLineTester::Begin(Purpose purpose, base::Duration span, base::TimePoint now,
                        base::TimePoint quiet_since) {
  purpose_ = purpose;
  hold_ups_ = 0;
  broke_off_ = false;
  silence_.BusyUntil(quiet_since);
  AwaitSilence(span, now);
}

void KLineTester::AwaitSilence(base::Duration span, base::TimePoint now) {
  silence_.Await(span, Time(&Timing::p3_max), now);
  heard_.Clear();
  phase_ = Phase::kSilence;
}

// What the computer held up so long that the ECU has given it up is sent anew.
void KLineTester::Redo(base::TimePoint now) {
  if (++hold_ups_ > kMostHoldUps) return Fail(kNoAnswer, kHeldUp);
  AwaitSilence(std::max<base::Duration>(silence_.Span(), kForgotten), now);
}

void KLineTester::BytesArrived(base::ByteView bytes, base::TimePoint now) {
  silence_.BusyUntil(now);
  if (phase_ == Phase::kIdle || (phase_ == Phase::kAwakening && !awakening_->IsListening())) return;
  heard_.Append(bytes);
  if (phase_ == Phase::kExchange) {
    exchange_.BytesArrived(bytes, now);
    Deliver();
  } else if (phase_ == Phase::kAwakening) {
    awakening_->BytesArrived(bytes, now);
  }
  MoveOn(now);
}

void KLineTester::TimeElapsed(base::TimePoint now) {
  if (phase_ == Phase::kSilence) SilenceElapsed(now);
  if (phase_ == Phase::kAwakening) awakening_->TimeElapsed(now);
  if (phase_ == Phase::kExchange) exchange_.TimeElapsed(now);
  MoveOn(now);
}

void KLineTester::Written(base::TimePoint now) {
  if (phase_ != Phase::kExchange) return;
  exchange_.Written(now);
  silence_.BusyUntil(exchange_.SentUntil());
}

std::optional<KLineTester::Action> KLineTester::TakeAction() { return TakeFirst(actions_); }

std::optional<KLineTester::Event> KLineTester::TakeEvent() { return TakeFirst(events_); }

std::optional<base::TimePoint> KLineTester::Due() const {
  if (phase_ == Phase::kAwakening) return awakening_->Due();
  return phase_ == Phase::kExchange ? exchange_.Due() : std::nullopt;
}

std::optional<base::TimePoint> KLineTester::Deadline() const {
  if (phase_ == Phase::kSilence) return silence_.Deadline();
  if (phase_ == Phase::kAwakening) return awakening_->Deadline();
  return phase_ == Phase::kExchange ? exchange_.Deadline() : std::nullopt;
}

std::optional<base::TimePoint> KLineTester::SendingUntil() const {
  if (phase_ == Phase::kIdle || purpose_ != Purpose::kRequest) return std::nullopt;
  return phase_ == Phase::kExchange ? exchange_.SentUntil() : Deadline();
}

std::optional<base::TimePoint> KLineTester::ReceivingUntil() const {
  const bool is_request = phase_ == Phase::kExchange && purpose_ == Purpose::kRequest;
  return is_request ? exchange_.ReceivingUntil() : std::nullopt;
}

// Each phase goes over into the next without an event in between.
void KLineTester::MoveOn(base::TimePoint now) {
  if (phase_ == Phase::kAwakening) WakeUpEcu(now);
  if (phase_ == Phase::kExchange) RunExchange(now);
}

void KLineTester::SilenceElapsed(base::TimePoint now) {
  if (silence_.IsOver(now)) {
    heard_.Clear();
    if (purpose_ != Purpose::kInitialisation) return StartExchange(now);
    phase_ = Phase::kAwakening;
    awakening_.emplace(function_, means_, agreement_.ByteTime(), echo_, actions_);
  } else if (silence_.IsGivenUp(now)) {
    Fail(kNoAnswer, "the line is never silent");
  }
}

void KLineTester::WakeUpEcu(base::TimePoint now) {
  awakening_->MoveOn(now);
  silence_.BusyUntil(awakening_->BusyUntil());
  switch (awakening_->CurrentState()) {
    case EcuAwakening::State::kRunning:
      return;
    case EcuAwakening::State::kAwake:
      message_ = {kStartCommunication};
      return StartExchange(now);
    case EcuAwakening::State::kHasKeyBytes:
      return Started(StartAnswer::Of(awakening_->FirstKeyByte(), awakening_->SecondKeyByte()));
    case EcuAwakening::State::kLate:
      return Redo(now);
    case EcuAwakening::State::kNoEcho:
      return Fail(kNoAnswer, FrameExchange::kNoEchoText);
    case EcuAwakening::State::kNotAnswering:
      // The ECU is there: a late byte of ours, or a damaged one of its own, is no reason to give up.
      if (awakening_->HasBegun() && !std::exchange(broke_off_, true)) {
        return AwaitSilence(silence_.Span(), now);
      }
      return Fail(kNoAnswer, "no " + awakening_->MissingStep());
  }
}

// An initialisation has addresses whatever the header of requests is, so that the ECU knows that it is meant.
void KLineTester::StartExchange(base::TimePoint now) {
  const bool start = purpose_ == Purpose::kInitialisation;
  if (start && function_.KLine().functional) {
    exchange_.SetAddresses({function_.KLine().init_address, function_.tester, true, true});
  }
  KLineTiming times = agreement_.Times();
  if (hold_ups_ >= kPacedAttempts) times.p4_min = base::Duration::zero();
  exchange_.SetByteTime(agreement_.ByteTime());
  exchange_.Start(message_.View(), start ? kStartForm : *agreement_.FormFor(message_.Length()), times, now,
                  purpose_ != Purpose::kRequest);
  phase_ = Phase::kExchange;
}

void KLineTester::RunExchange(base::TimePoint now) {
  if (const base::ByteView bytes = exchange_.TakeBytes(now); !bytes.empty()) {
    silence_.BusyUntil(exchange_.SentUntil());
    actions_.push_back({Action::Kind::kWrite, base::ByteBuffer(bytes)});
  }
  if (exchange_.TakeSent(now) && purpose_ == Purpose::kRequest) events_.push_back({Event::Kind::kSent, {}});
  if (exchange_.CurrentOutcome() != FrameExchange::Outcome::kUnderWay) FinishExchange(now);
}

// The answer to startCommunication is ours, and nobody waits for that to stopCommunication.
void KLineTester::Deliver() {
  for (base::ByteBuffer& message : exchange_.TakeMessages()) {
    if (purpose_ != Purpose::kInitialisation) TakeNote(message.View());
    if (purpose_ == Purpose::kRequest) {
      events_.push_back({Event::Kind::kMessage, std::move(message)});
    } else if (purpose_ == Purpose::kInitialisation &&
               exchange_.CurrentOutcome() == FrameExchange::Outcome::kAnswered) {
      message_ = std::move(message);
    }
  }
}

void KLineTester::FinishExchange(base::TimePoint now) {
  if (exchange_.CurrentOutcome() == FrameExchange::Outcome::kHeldUp) return Redo(now);
  phase_ = Phase::kIdle;
  if (purpose_ == Purpose::kStop) return Abandon();
  const bool start = purpose_ == Purpose::kInitialisation;
  switch (exchange_.CurrentOutcome()) {
    case FrameExchange::Outcome::kAnswered:
      if (start) Started(StartAnswer::Of(message_.View(), names_));
      break;
    case FrameExchange::Outcome::kForeign:
      if (start) Fail(kInitialisationRefused, "another answer");
      break;
    default:
      NotAnswered(exchange_.WhyNoAnswer(!heard_.Empty()));
      break;
  }
}

void KLineTester::Started(const StartAnswer& answer) {
  if (!answer.key_bytes) return Fail(kInitialisationRefused, answer.text);
  if (!answer.text.empty())
    events_.push_back({Event::Kind::kNote, {}, 0, function_.ecu + ": " + answer.text});
  agreement_.Announced(*answer.key_bytes);
  if (function_.KLine().functional) TalkToWhoAnswered();
  phase_ = Phase::kIdle;
  connected_ = true;
  stopped_ = false;
  events_.push_back({Event::Kind::kConnected, {}});
}

// A functional initialisation leaves it open who is talked to until somebody answers.
void KLineTester::TalkToWhoAnswered() {
  const bool fast = function_.KLine().init == KLineDescription::Init::kFast;
  const auto ecu = fast ? exchange_.AnsweredBy() : std::nullopt;
  exchange_.SetAddresses({ecu.value_or(function_.address), function_.tester, false, !ecu});
}

// What the services of the K-line itself change.
void KLineTester::TakeNote(base::ByteView answer) {
  if (answer[0] == kStopCommunication + kPositiveOffset) {
    connected_ = false;
    stopped_ = message_.At(0) == kStopCommunication;
  }
  if (IsPositiveTo(message_.At(0), answer)) agreement_.Granted(message_.View());
}

// The communication stands: the message may be sent again.
void KLineTester::NotAnswered(const std::string& what) {
  if (purpose_ != Purpose::kRequest) return Fail(kNoAnswer, what);
  Report(kNoAnswer, what);
}

void KLineTester::Fail(std::int32_t number, const std::string& what) {
  phase_ = Phase::kIdle;
  connected_ = false;
  if (purpose_ != Purpose::kStop) Report(number, what);
}

void KLineTester::Report(std::int32_t number, const std::string& what) {
  events_.push_back({Event::Kind::kFailure, {}, number, WhatFailed() + ": " + what + heard_.Text()});
}

std::string KLineTester::WhyNoAnswer() const {
  return WhatFailed() + ": " + exchange_.WhyNoAnswer(!heard_.Empty()) + heard_.Text();
}

std::string KLineTester::WhatFailed() const {
  if (purpose_ == Purpose::kRequest) return names_.NameOf(message_.At(0));
  return function_.KLine().init == KLineDescription::Init::kFast ? "fast initialisation, startCommunication"
                                                                 : "5-baud initialisation";
}

}  // namespace korval::ecu
