// SPDX-License-Identifier: MIT
#include "ecu/kline/KLineTester.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/kwp2000/Exchange.h"
#include "ecu/kwp2000/Names.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kStartCommunication = 0x81;
constexpr std::uint8_t kStopCommunication = 0x82;
constexpr std::uint8_t kAccessTiming = 0x83;
constexpr std::uint8_t kTimesToDefault = 0x01;
constexpr std::uint8_t kTimesToGiven = 0x03;
constexpr std::size_t kBitsPerByte = 10;  // with start and stop bit
constexpr std::size_t kMostHeard = 32;
constexpr HeaderForm kStartForm{true, false};
// Of one request or initialisation.
constexpr int kMostHoldUps = 5;
constexpr char kHeldUp[] =
    "the computer is too busy to send it without gaps: relieve it, or start the server with --realtime";
constexpr char kNoEcho[] = "no echo: check cable and ignition";

template <typename Item>
std::optional<Item> TakeFirst(std::deque<Item>& items) {
  if (items.empty()) return std::nullopt;
  std::optional<Item> first(std::move(items.front()));
  items.pop_front();
  return first;
}

}  // namespace

KLineTester::KLineTester(const FunctionDescription& function)
    : function_(function),
      byte_time_(std::chrono::ceil<std::chrono::microseconds>(
          std::chrono::duration<double>(static_cast<double>(kBitsPerByte) / function.baud))),
      echo_(function.echo),
      exchange_({function.address, function.tester}, byte_time_, echo_),
      timing_(KLineTiming::Of(function.timing, key_bytes_)) {}

void KLineTester::Abandon() {
  phase_ = Phase::kIdle;
  connected_ = false;
  actions_.clear();
  events_.clear();
}

void KLineTester::Connect(base::TimePoint now, base::TimePoint quiet_since, bool has_break) {
  Abandon();
  has_break_ = has_break;
  echo_ = EchoFilter(function_.echo);
  key_bytes_ = KeyBytes::Any();
  timing_ = KLineTiming::Of(function_.timing, key_bytes_);
  if (function_.init == FunctionDescription::Init::kNone) {
    connected_ = true;
    events_.push_back({Event::Kind::kConnected, {}});
    return;
  }
  Begin(Purpose::kInitialisation, Time(&Timing::t_idle), now, quiet_since);
}

void KLineTester::Send(base::ByteView message, base::TimePoint now, base::TimePoint quiet_since) {
  message_ = base::ByteBuffer(message);
  if (!key_bytes_.FormFor(message.size())) {
    return events_.push_back({Event::Kind::kFailure,
                              {},
                              kValueRefused,
                              "a request of " + std::to_string(message.size()) +
                                  " bytes is longer than the ECU takes on the K-line"});
  }
  Begin(Purpose::kRequest, timing_.p3_min, now, quiet_since);
}

void KLineTester::Stop(base::TimePoint now, base::TimePoint quiet_since) {
  const bool was_connected = connected_;
  Abandon();
  if (!was_connected || function_.init == FunctionDescription::Init::kNone) return;
  message_ = {kStopCommunication};
  Begin(Purpose::kStop, timing_.p3_min, now, quiet_since);
}

void KLineTester::Begin(Purpose purpose, base::TimePoint silence, base::TimePoint now,
                        base::TimePoint quiet_since) {
  purpose_ = purpose;
  hold_ups_ = 0;
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
  AwaitSilence(now);
}

void KLineTester::BytesArrived(base::ByteView bytes, base::TimePoint now) {
  quiet_since_ = std::max(quiet_since_, now);
  if (phase_ == Phase::kIdle || phase_ == Phase::kWakeUp) return;
  const std::size_t room = kMostHeard + 1 - std::min(heard_.Length(), kMostHeard + 1);
  heard_.Append(bytes.first(std::min(bytes.size(), room)));
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
    const bool fast = function_.init == FunctionDescription::Init::kFast;
    wake_up_ =
        fast ? WakeUp::Fast(function_.timing) : WakeUp::FiveBaud(function_.timing, function_.init_address);
  } else if (now >= silence_end_) {
    Fail(kNoAnswer, "the line is never silent");
  }
}

void KLineTester::Wake(base::TimePoint now) {
  const bool fast = function_.init == FunctionDescription::Init::kFast;
  if (!fast && !has_break_) {
    Write(std::array{function_.init_address}, now + byte_time_);
    echo_.Expect({});
    handshake_.emplace(function_.timing, function_.init_address, byte_time_, now + byte_time_);
    phase_ = Phase::kHandshake;
    return;
  }
  if (has_break_ && wake_up_->IsLate(now)) {
    actions_.push_back({Action::Kind::kLetRise, {}});
    quiet_since_ = now;
    return Redo(now);
  }
  while (const auto low = wake_up_->TakeLevel(now)) {
    actions_.push_back({*low ? Action::Kind::kPullLow : Action::Kind::kLetRise, {}});
  }
  if (has_break_) echo_.LineWasLow();
  if (!wake_up_->IsDone(now)) return;
  quiet_since_ = now;
  if (fast) {
    message_ = {kStartCommunication};
    return StartExchange(now);
  }
  echo_.Expect({});
  handshake_.emplace(function_.timing, function_.init_address, byte_time_, now);
  phase_ = Phase::kHandshake;
}

void KLineTester::ShakeHands(base::TimePoint now) {
  if (const auto byte = handshake_->TakeByte(now)) {
    echo_.Expect(std::array{*byte});
    Write(std::array{*byte}, now + byte_time_);
  }
  if (handshake_->CurrentState() == SlowHandshake::State::kFailed) {
    Fail(kNoAnswer, echo_.IsMissing() ? kNoEcho : "no " + handshake_->MissingStep());
  } else if (handshake_->CurrentState() == SlowHandshake::State::kDone) {
    Started(handshake_->FirstKeyByte(), handshake_->SecondKeyByte());
  }
}

void KLineTester::StartExchange(base::TimePoint now) {
  const HeaderForm form =
      purpose_ == Purpose::kInitialisation ? kStartForm : *key_bytes_.FormFor(message_.Length());
  exchange_.Start(message_.View(), form, timing_, now);
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
    if (purpose_ == Purpose::kRequest) {
      TakeNote(message.View());
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
      NotAnswered(std::string("the answer was damaged, it has ") + exchange_.Damage());
      break;
    case FrameExchange::Outcome::kSilent:
      NotAnswered(heard_.Empty() && echo_.State() != EchoFilter::Echo::kOff
                      ? "no answer and no echo: check cable and ignition"
                      : "no answer");
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
    return Fail(kInitialisationRefused, NegativeAnswerText(kStartCommunication, message[2]));
  }
  static constexpr std::size_t kLength = 3;
  if (message.size() < kLength) return Fail(kInitialisationRefused, "an answer without key bytes");
  Started(message[1], message[2]);
}

void KLineTester::Started(std::uint8_t first_key_byte, std::uint8_t second_key_byte) {
  const auto key_bytes = KeyBytes::Read(first_key_byte, second_key_byte);
  if (!key_bytes) {
    return Fail(kInitialisationRefused, "key bytes " +
                                            base::HexText(std::array{first_key_byte, second_key_byte}) +
                                            " are not those of ISO 14230");
  }
  key_bytes_ = *key_bytes;
  timing_ = KLineTiming::Of(function_.timing, key_bytes_);
  phase_ = Phase::kIdle;
  connected_ = true;
  events_.push_back({Event::Kind::kConnected, {}});
}

// What the services of the K-line itself change.
void KLineTester::TakeNote(base::ByteView answer) {
  if (answer[0] == kStopCommunication + kPositiveOffset) connected_ = false;
  ChangeTiming(answer);
}

void KLineTester::ChangeTiming(base::ByteView answer) {
  const base::ByteView request = message_.View();
  const bool agreed =
      request[0] == kAccessTiming && request.size() >= 2 && answer[0] == kAccessTiming + kPositiveOffset;
  if (!agreed) return;
  if (request[1] == kTimesToDefault) timing_ = KLineTiming::Of(function_.timing, key_bytes_);
  if (request[1] == kTimesToGiven) timing_.Change(request.subspan(2));
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
  events_.push_back({Event::Kind::kFailure, {}, number, WhatFailed() + ": " + what + Heard()});
}

std::string KLineTester::WhatFailed() const {
  if (purpose_ == Purpose::kRequest) return ServiceName(message_.At(0));
  return function_.init == FunctionDescription::Init::kFast ? "fast initialisation, startCommunication"
                                                            : "5-baud initialisation";
}

std::string KLineTester::Heard() const {
  if (heard_.Empty()) return " (nothing was heard)";
  if (heard_.Length() <= kMostHeard) return " (heard: " + heard_.ToHex() + ")";
  return " (heard: " + base::HexText(heard_.View(0, kMostHeard)) + "...)";
}

}  // namespace korval::ecu
