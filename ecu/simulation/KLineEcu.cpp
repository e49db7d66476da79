// SPDX-License-Identifier: MIT
#include "ecu/simulation/KLineEcu.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/kline/HeaderChoice.h"
#include "ecu/link/AnswerBytes.h"
#include "ecu/simulation/FiveBaudAddress.h"

namespace korval::ecu {
namespace {

using Init = KLineDescription::Init;

constexpr std::uint8_t kStartCommunication = 0x81;
constexpr std::uint8_t kStopCommunication = 0x82;
constexpr std::uint8_t kAccessTiming = 0x83;
constexpr std::uint8_t kTimesToDefault = 0x01;
constexpr std::uint8_t kTimesToGiven = 0x03;
constexpr std::uint8_t kGeneralReject = 0x10;
constexpr std::uint8_t kSubFunctionNotSupported = 0x12;
constexpr std::uint8_t kSyncByte = 0x55;
// W1, W2, W3 and W4 as short as ISO 14230-2 allows.
constexpr Milliseconds kBeforeSync{60};
constexpr Milliseconds kBeforeFirstKey{5};
constexpr Milliseconds kBeforeSecondKey{1};
constexpr Milliseconds kBeforeAddress{25};
// P4max: a longer silence ends a request.
constexpr Milliseconds kLongestGap{20};
// More requests than these nobody sends before the first is answered.
constexpr std::size_t kMostOutgoing = 16;

std::uint8_t Inverted(std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); }

std::uint8_t Positive(std::uint8_t service) { return static_cast<std::uint8_t>(service + kPositiveOffset); }

}  // namespace

KLineEcu::KLineEcu(std::shared_ptr<base::EventLoop> loop, const FunctionDescription& function,
                   std::shared_ptr<SimulatedEcu> ecu, Write write)
    : loop_(std::move(loop)),
      function_(function),
      ecu_(std::move(ecu)),
      write_(std::move(write)),
      agreement_(function),
      timer_(loop_->CreateTimer([this] { SendDue(); })),
      lows_end_(loop_->CreateTimer([this] { JudgeLows(); })),
      silence_(loop_->CreateDeadline([this] { SilenceElapsed(); })) {
  FallAsleep();
}

// What was agreed on ends with the communication; the key bytes say what holds at the beginning of the next.
void KLineEcu::FallAsleep() {
  state_ = State::kAsleep;
  agreement_.Announced(KeyBytes::Read(ecu_->KeyBytes()[0], ecu_->KeyBytes()[1]).value_or(KeyBytes::Any()));
}

void KLineEcu::LineWentLow() {
  if (state_ != State::kAsleep || function_.KLine().init != Init::kSlow) return;
  if (lows_.empty()) lows_end_->Start(kFiveBaudAddressTime);
  lows_.push_back(loop_->Now());
}

void KLineEcu::JudgeLows() {
  const auto lows = std::exchange(lows_, {});
  if (IsFiveBaudAddress(lows, function_.KLine().init_address)) AddressArrived(function_.KLine().init_address);
}

void KLineEcu::AddressArrived(std::uint8_t address) {
  const base::TimePoint now = loop_->Now();
  if (function_.KLine().init != Init::kSlow || address != function_.KLine().init_address) return;
  if (ecu_->TakeInitFault() || ecu_->TakeWireFault({})) return;
  outgoing_.clear();
  state_ = State::kAwaitsKeyByte;
  SendAt(now + kBeforeSync, {kSyncByte});
  SendAt(now + kBeforeSync + kBeforeFirstKey, {ecu_->KeyBytes()[0]});
  SendAt(now + kBeforeSync + kBeforeFirstKey + kBeforeSecondKey, {ecu_->KeyBytes()[1]});
}

void KLineEcu::BytesArrived(base::ByteView bytes) {
  const base::TimePoint now = loop_->Now();
  if (echo_) write_(bytes);
  last_byte_ = last_talk_ = now;
  for (const std::uint8_t byte : bytes) ByteArrived(byte, now);
  AwaitMore();
}

// What is waited for is judged by its deadline, and not by when a byte is looked at.
void KLineEcu::AwaitMore() {
  if (reader_.IsInside()) return silence_->Set(last_byte_ + kLongestGap);
  if (state_ == State::kAwaitsKeyByte) {
    const base::Duration w4_max = function_.timing.Value(&Timing::w4_max);
    return outgoing_.empty() ? silence_->Set(last_talk_ + w4_max) : silence_->Clear();
  }
  const bool endless = state_ == State::kAsleep || agreement_.Times().p3_max == base::Duration::max();
  if (endless) return silence_->Clear();
  silence_->Set(last_talk_ + agreement_.Times().p3_max);
}

void KLineEcu::SilenceElapsed() {
  if (reader_.IsInside()) {
    reader_.Reset();
  } else {
    FallAsleep();
  }
  AwaitMore();
}

void KLineEcu::ByteArrived(std::uint8_t byte, base::TimePoint now) {
  if (state_ == State::kAwaitsKeyByte) return KeyByteArrived(byte, now);
  if (state_ == State::kAsleep && function_.KLine().init == Init::kSlow) {
    return byte == 0 ? LineWentLow() : AddressArrived(byte);
  }
  if (reader_.Add(byte) == FrameReader::Result::kFrame && IsForUs()) FrameArrived(now);
}

void KLineEcu::KeyByteArrived(std::uint8_t byte, base::TimePoint now) {
  if (byte != Inverted(ecu_->KeyBytes()[1])) {
    return FallAsleep();
  }
  state_ = State::kTalking;
  SendAt(now + kBeforeAddress, {Inverted(function_.KLine().init_address)});
}

bool KLineEcu::IsForUs() const {
  if (!reader_.HasAddresses()) return true;
  if (reader_.Source() != function_.tester) return false;
  if (!reader_.Form().functional) return reader_.Target() == function_.address;
  return function_.KLine().functional && reader_.Target() == function_.KLine().init_address;
}

// An ECU whose requests have a header that the file fixes takes no other.
bool KLineEcu::UnderstandsHeader() const {
  const auto fixed = FixedHeader(function_.KLine().header);
  return !fixed || (fixed->addresses == form_.addresses && fixed->length_byte == form_.length_byte);
}

void KLineEcu::FrameArrived(base::TimePoint now) {
  const base::ByteBuffer request(reader_.Message());
  form_ = reader_.Form();
  const std::uint8_t service = request.At(0);
  if (service == kStartCommunication && function_.KLine().init == Init::kFast) return StartCommunication(now);
  const bool talking = state_ == State::kTalking || function_.KLine().init == Init::kNone;
  if (!talking || !UnderstandsHeader()) return;
  if (service == kStopCommunication) return StopCommunication(now);
  if (service == kAccessTiming) return AccessTiming(request.View(), now);
  Answer(request.View(), now);
}

void KLineEcu::StartCommunication(base::TimePoint now) {
  const base::TimePoint due = now + agreement_.Times().p2_min;
  outgoing_.clear();
  if (const auto fault = ecu_->TakeInitFault()) {
    if (*fault != kInitialisationRefused) return;
    return SendAt(due, Framed(std::array{kNegativeResponse, kStartCommunication, kGeneralReject}));
  }
  FallAsleep();
  state_ = State::kTalking;
  const std::array answer{Positive(kStartCommunication), ecu_->KeyBytes()[0], ecu_->KeyBytes()[1]};
  if (const auto fault = ecu_->TakeWireFault({})) {
    return AnswerFaulty(*fault, answer, kStartCommunication, due);
  }
  SendAt(due, Framed(answer));
}

void KLineEcu::StopCommunication(base::TimePoint now) {
  const base::TimePoint due = now + agreement_.Times().p2_min;
  FallAsleep();
  SendAt(due, Framed(std::array{Positive(kStopCommunication)}));
}

// Byte 2 says what is asked for. The limits and the times in use cannot be read.
void KLineEcu::AccessTiming(base::ByteView request, base::TimePoint now) {
  const base::TimePoint due = now + agreement_.Times().p2_min;
  const std::uint8_t what = request.size() < 2 ? std::uint8_t{0} : request[1];
  if (what != kTimesToDefault && what != kTimesToGiven) {
    return SendAt(due, Framed(std::array{kNegativeResponse, kAccessTiming, kSubFunctionNotSupported}));
  }
  SendAt(due, Framed(std::array{Positive(kAccessTiming), what}), request);
}

void KLineEcu::Answer(base::ByteView request, base::TimePoint now) {
  const base::TimePoint due = now + std::max<base::Duration>(agreement_.Times().p2_min, ecu_->Latency());
  const auto wire_fault = ecu_->TakeWireFault(request);
  const SimulatedEcu::Reaction reaction = ecu_->React(request, now);
  if (reaction.fault || reaction.answer.empty()) return;
  if (reaction.answer.size() > kLongestKLineMessage) {
    return SendAt(due, Framed(std::array{kNegativeResponse, request[0], kGeneralReject}));
  }
  if (wire_fault) return AnswerFaulty(*wire_fault, reaction.answer, request[0], due);
  const bool agreed = reaction.answer[0] == Positive(request[0]);
  SendAt(due, Framed(reaction.answer), agreed ? request : base::ByteView());
}

void KLineEcu::AnswerFaulty(WireFault fault, base::ByteView message, std::uint8_t service,
                            base::TimePoint due) {
  base::ByteBuffer frame = Framed(message);
  switch (fault) {
    case WireFault::kMissing:
      return;
    case WireFault::kLate:
      return SendAt(due + 2 * agreement_.Times().p2_max, std::move(frame));
    case WireFault::kDamaged: {
      const std::size_t middle = frame.Length() / 2;
      frame.SetAt(middle, frame.At(middle) ^ 1U);
      return SendAt(due, std::move(frame));
    }
    case WireFault::kPending:
      SendAt(due, Framed(std::array{kNegativeResponse, service, kResponsePending}));
      return SendAt(due + agreement_.Times().p2_max + agreement_.Times().p2_min, std::move(frame));
    case WireFault::kForeign:
      SendAt(due, BuildFrame({true, false}, function_.tester, Inverted(function_.address), message.first(1)));
      return SendAt(due + agreement_.Times().p2_min, std::move(frame));
  }
}

base::ByteBuffer KLineEcu::Framed(base::ByteView message) const {
  const bool length_byte = form_.length_byte || message.size() > kLongestLengthInFormat;
  return BuildFrame({form_.addresses, length_byte}, function_.tester, function_.address, message);
}

void KLineEcu::SendAt(base::TimePoint due, base::ByteBuffer bytes, base::ByteView request) {
  if (outgoing_.size() == kMostOutgoing) return;
  outgoing_.push_back({due, std::move(bytes), base::ByteBuffer(request)});
  SendDue();
}

void KLineEcu::SendDue() {
  const base::TimePoint now = loop_->Now();
  while (!outgoing_.empty() && outgoing_.front().due <= now) {
    const Outgoing sent = std::move(outgoing_.front());
    outgoing_.pop_front();
    last_talk_ = now;
    write_(sent.bytes.View());
    if (!sent.request.Empty()) agreement_.Granted(sent.request.View());
    AwaitMore();
  }
  if (outgoing_.empty()) return timer_->Stop();
  timer_->Start(std::chrono::ceil<std::chrono::microseconds>(outgoing_.front().due - now));
}

}  // namespace korval::ecu
