// SPDX-License-Identifier: MIT
#include "ecu/kline/KLineTester.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kStartCommunication = 0x81;
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
constexpr char kNoEcho[] = "no echo: check cable and ignition";

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

void KLineTester::Begin(Purpose purpose, base::Duration silence, base::TimePoint now,
                        base::TimePoint quiet_since) {
  purpose_ = purpose;
  hold_ups_ = 0;
  broke_off_ = false;
  quiet_since_ = std::max(quiet_since_, quiet_since);
  silence_ = silence;
  AwaitSilence(now);
}

// That the line is silent shows when its time has elapsed, and never at once: the adapter may still hold
// what was said before.
void KLineTester::AwaitSilence(base::TimePoint now) {
  silence_end_ = std::max(now, quiet_since_ + silence_) + Time(&Timing::p3_max);
  heard_.Clear();
  phase_ = Phase::kSilence;
}

// What the computer held up so long that the ECU has given it up is sent anew.
void KLineTester::Redo(base::TimePoint now) {
  if (++hold_ups_ > kMostHoldUps) return Fail(kNoAnswer, kHeldUp);
  silence_ = std::max<base::Duration>(silence_, kForgotten);
  AwaitSilence(now);
}

void KLineTester::BytesArrived(base::ByteView bytes, base::TimePoint now) {
  quiet_since_ = std::max(quiet_since_, now);
  if (phase_ == Phase::kIdle || phase_ == Phase::kWakeUp) return;
  heard_.Append(bytes);
  if (phase_ == Phase::kExchange) {
    exchange_.BytesArrived(bytes, now);
    Deliver();
  } else if (phase_ == Phase::kHandshake) {
    base::ByteBuffer rest;
    echo_.Filter(bytes, rest);
    for (const std::uint8_t byte : rest.View()) handshake_->ByteArrived(byte, now);
  }
  MoveOn(now);
}

void KLineTester::TimeElapsed(base::TimePoint now) {
  if (phase_ == Phase::kSilence) SilenceElapsed(now);
  if (phase_ == Phase::kHandshake) handshake_->TimeElapsed(now);
  if (phase_ == Phase::kExchange) exchange_.TimeElapsed(now);
  MoveOn(now);
}

void KLineTester::Written(base::TimePoint now) {
  if (phase_ != Phase::kExchange) return;
  exchange_.Written(now);
  quiet_since_ = std::max(quiet_since_, exchange_.SentUntil());
}

std::optional<KLineTester::Action> KLineTester::TakeAction() { return TakeFirst(actions_); }

std::optional<KLineTester::Event> KLineTester::TakeEvent() { return TakeFirst(events_); }

std::optional<base::TimePoint> KLineTester::Due() const {
  if (phase_ == Phase::kWakeUp) return wake_up_->Due();
  if (phase_ == Phase::kHandshake) return handshake_->Due();
  return phase_ == Phase::kExchange ? exchange_.Due() : std::nullopt;
}

std::optional<base::TimePoint> KLineTester::Deadline() const {
  if (phase_ == Phase::kSilence) return std::min(quiet_since_ + silence_, silence_end_);
  if (phase_ == Phase::kHandshake) return handshake_->Deadline();
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
  if (phase_ == Phase::kWakeUp) Wake(now);
  if (phase_ == Phase::kHandshake) ShakeHands(now);
  if (phase_ == Phase::kExchange) RunExchange(now);
}

void KLineTester::SilenceElapsed(base::TimePoint now) {
  if (now >= quiet_since_ + silence_) {
    heard_.Clear();
    if (purpose_ != Purpose::kInitialisation) return StartExchange(now);
    phase_ = Phase::kWakeUp;
    const bool fast = function_.KLine().init == KLineDescription::Init::kFast;
    wake_up_ = fast ? WakeUp::Fast(function_.timing)
                    : WakeUp::FiveBaud(function_.timing, function_.KLine().init_address);
  } else if (now >= silence_end_) {
    Fail(kNoAnswer, "the line is never silent");
  }
}

void KLineTester::Wake(base::TimePoint now) {
  const bool fast = function_.KLine().init == KLineDescription::Init::kFast;
  if (!fast && means_ == WakeUp::Means::kNone) {
    const base::TimePoint end = now + agreement_.ByteTime();
    Write(std::array{function_.KLine().init_address}, end);
    return ListenForKeyBytes(end);
  }
  if (means_ != WakeUp::Means::kNone && wake_up_->IsLate(now)) {
    SetLevel(false);
    EndWakeUp();
    quiet_since_ = now;
    return Redo(now);
  }
  while (const auto low = wake_up_->TakeLevel(now)) SetLevel(*low);
  if (means_ != WakeUp::Means::kNone) echo_.LineWasLow();
  if (!wake_up_->IsDone(now)) return;
  EndWakeUp();
  quiet_since_ = now;
  if (!fast) return ListenForKeyBytes(now);
  message_ = {kStartCommunication};
  StartExchange(now);
}

void KLineTester::SetLevel(bool low) {
  actions_.push_back({low ? Action::Kind::kPullLow : Action::Kind::kLetRise, {}});
  if (!low || means_ != WakeUp::Means::kByte) return;
  actions_.push_back({Action::Kind::kSetSpeed, {}, wake_up_->SlowBaud()});
  actions_.push_back({Action::Kind::kWrite, {0x00}});
}

void KLineTester::EndWakeUp() {
  if (means_ == WakeUp::Means::kByte)
    actions_.push_back({Action::Kind::kSetSpeed, {}, function_.KLine().baud});
}

void KLineTester::ListenForKeyBytes(base::TimePoint from) {
  echo_.Expect({});
  handshake_.emplace(function_.timing, function_.KLine().init_address, agreement_.ByteTime(), from);
  phase_ = Phase::kHandshake;
}

void KLineTester::ShakeHands(base::TimePoint now) {
  if (const auto byte = handshake_->TakeByte(now)) {
    echo_.Expect(std::array{*byte});
    Write(std::array{*byte}, now + agreement_.ByteTime());
  }
  if (handshake_->CurrentState() == SlowHandshake::State::kFailed) {
    if (echo_.IsMissing()) return Fail(kNoAnswer, kNoEcho);
    // The ECU is there: a late byte of ours, or a damaged one of its own, is no reason to give up.
    if (handshake_->HasBegun() && !std::exchange(broke_off_, true)) return AwaitSilence(now);
    Fail(kNoAnswer, "no " + handshake_->MissingStep());
  } else if (handshake_->CurrentState() == SlowHandshake::State::kDone) {
    Started(handshake_->FirstKeyByte(), handshake_->SecondKeyByte());
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
    Write(bytes, exchange_.SentUntil());
  }
  if (exchange_.TakeSent(now) && purpose_ == Purpose::kRequest) events_.push_back({Event::Kind::kSent, {}});
  if (exchange_.CurrentOutcome() != FrameExchange::Outcome::kUnderWay) FinishExchange(now);
}

void KLineTester::Write(base::ByteView bytes, base::TimePoint until) {
  quiet_since_ = std::max(quiet_since_, until);
  actions_.push_back({Action::Kind::kWrite, base::ByteBuffer(bytes)});
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
  switch (exchange_.CurrentOutcome()) {
    case FrameExchange::Outcome::kAnswered:
      if (purpose_ == Purpose::kInitialisation) TakeAnswer(message_.View());
      break;
    case FrameExchange::Outcome::kNoEcho:
      NotAnswered(kNoEcho);
      break;
    case FrameExchange::Outcome::kDisturbed:
      NotAnswered("the echo is not what was sent: another tester is on the line");
      break;
    case FrameExchange::Outcome::kDamaged:
    case FrameExchange::Outcome::kSilent:
      NotAnswered(Silence());
      break;
    case FrameExchange::Outcome::kForeign:
      if (purpose_ == Purpose::kInitialisation) Fail(kInitialisationRefused, "another answer");
      break;
    case FrameExchange::Outcome::kUnderWay:
    case FrameExchange::Outcome::kHeldUp:
      break;
  }
}

void KLineTester::TakeAnswer(base::ByteView message) {
  if (message[0] == kNegativeResponse) {
    return Fail(kInitialisationRefused, names_.RefusalText(kStartCommunication, message[2]));
  }
  static constexpr std::size_t kLength = 3;
  if (message.size() < kLength) return Fail(kInitialisationRefused, "an answer without key bytes");
  Started(message[1], message[2]);
}

void KLineTester::Started(std::uint8_t first_key_byte, std::uint8_t second_key_byte) {
  const auto key_bytes = KeyBytes::Read(first_key_byte, second_key_byte);
  const std::string text = "key bytes " + base::HexText(std::array{first_key_byte, second_key_byte});
  if (!key_bytes) return Fail(kInitialisationRefused, text + " are not those of ISO 14230");
  if (!key_bytes->HasRightParity()) {
    events_.push_back({Event::Kind::kNote,
                       {},
                       0,
                       function_.ecu + ": " + text + " have a wrong parity, which is overlooked"});
  }
  agreement_.Announced(*key_bytes);
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
  return WhatFailed() + ": " + (echo_.IsMissing() ? kNoEcho : Silence()) + heard_.Text();
}

std::string KLineTester::Silence() const {
  if (exchange_.Damage() != nullptr) {
    return std::string("the answer was damaged, it has ") + exchange_.Damage();
  }
  return heard_.Empty() && echo_.State() != EchoFilter::Echo::kOff
             ? "no answer and no echo: check cable and ignition"
             : "no answer";
}

std::string KLineTester::WhatFailed() const {
  if (purpose_ == Purpose::kRequest) return names_.NameOf(message_.At(0));
  return function_.KLine().init == KLineDescription::Init::kFast ? "fast initialisation, startCommunication"
                                                                 : "5-baud initialisation";
}

}  // namespace korval::ecu
