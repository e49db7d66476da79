// SPDX-License-Identifier: MIT
#include "ecu/kline/FrameExchange.h"

#include <algorithm>

namespace korval::ecu {

FrameExchange::FrameExchange(Addresses addresses, base::TimePoint byte_time, EchoFilter& echo)
    : addresses_(addresses), byte_time_(byte_time), echo_(echo) {}

void FrameExchange::Start(base::ByteView message, HeaderForm form, const KLineTiming& timing,
                          base::TimePoint now) {
  timing_ = timing;
  base::ByteBuffer frame = BuildFrame(form, addresses_.ecu, addresses_.tester, message);
  echo_.Expect(frame.View());
  sender_.Start(std::move(frame), now, byte_time_, timing.p4_min);
  reader_.Reset();
  expected_ = ExpectedAnswer(message);
  outcome_ = Outcome::kUnderWay;
  sent_told_ = false;
  hunting_ = false;
  damage_ = nullptr;
  foreign_message_ = false;
  messages_.clear();
}

base::ByteView FrameExchange::TakeBytes(base::TimePoint now) {
  const base::ByteView bytes = sender_.Take(now);
  if (!bytes.empty() && sender_.IsDone()) {
    answer_deadline_ = sender_.End() + byte_time_ + timing_.p2_max;
    last_deadline_ = sender_.End() + timing_.pending_cap;
  }
  return bytes;
}

void FrameExchange::BytesArrived(base::ByteView bytes, base::TimePoint now) {
  if (outcome_ != Outcome::kUnderWay) return;
  if (now - last_byte_ > timing_.p1_max + byte_time_) {
    if (reader_.IsInside()) damage_ = "a truncated frame";
    reader_.Reset();
    hunting_ = false;
  }
  last_byte_ = now;
  base::ByteBuffer rest;
  if (!echo_.Filter(bytes, rest)) {
    outcome_ = sender_.IsDone() && !echo_.HasBegun() ? Outcome::kNoEcho : Outcome::kDisturbed;
    sender_.Stop();
    return;
  }
  for (const std::uint8_t byte : rest.View()) ReadByte(byte, now);
}

void FrameExchange::ReadByte(std::uint8_t byte, base::TimePoint now) {
  if (hunting_ || outcome_ != Outcome::kUnderWay) return;
  if (!reader_.IsInside()) frame_in_time_ = !sender_.IsDone() || now <= answer_deadline_;
  switch (reader_.Add(byte)) {
    case FrameReader::Result::kFrame:
      FrameArrived(now);
      break;
    case FrameReader::Result::kMalformed:
      damage_ = reader_.Reason();
      hunting_ = true;
      break;
    case FrameReader::Result::kIncomplete:
      break;
  }
}

bool FrameExchange::IsForUs() const {
  if (!reader_.HasAddresses()) return true;
  return reader_.Target() == addresses_.tester && reader_.Source() == addresses_.ecu;
}

void FrameExchange::FrameArrived(base::TimePoint now) {
  if (!IsForUs() || !sender_.IsDone() || !frame_in_time_) return;
  const base::ByteView message = reader_.Message();
  messages_.emplace_back(message);
  if (expected_.IsPending(message)) {
    answer_deadline_ = std::min(now + timing_.p2_star + byte_time_, last_deadline_);
  } else if (expected_.IsPositive(message) || expected_.IsNegative(message)) {
    outcome_ = Outcome::kAnswered;
  } else {
    foreign_message_ = true;
  }
}

bool FrameExchange::TakeSent(base::TimePoint now) {
  if (sent_told_ || !sender_.IsDone() || now < sender_.End() || echo_.IsMissing()) return false;
  sent_told_ = true;
  return true;
}

// A frame may end after the deadline if it began before it.
base::TimePoint FrameExchange::Deadline() const {
  if (!sender_.IsDone()) return sender_.Due();
  if (!sent_told_ && !echo_.IsMissing()) return sender_.End();
  if (!reader_.IsInside() || !frame_in_time_) return answer_deadline_;
  return std::max(answer_deadline_, last_byte_ + timing_.p1_max + byte_time_);
}

void FrameExchange::TimeElapsed(base::TimePoint now) {
  if (outcome_ != Outcome::kUnderWay || !sender_.IsDone() || now < Deadline()) return;
  if (echo_.IsMissing()) {
    outcome_ = Outcome::kNoEcho;
  } else if (foreign_message_) {
    outcome_ = Outcome::kForeign;
  } else if (reader_.IsInside() && frame_in_time_) {
    damage_ = "a truncated frame";
    outcome_ = Outcome::kDamaged;
  } else {
    outcome_ = damage_ != nullptr ? Outcome::kDamaged : Outcome::kSilent;
  }
}

}  // namespace korval::ecu
