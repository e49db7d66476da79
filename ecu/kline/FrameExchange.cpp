// SPDX-License-Identifier: MIT
#include "ecu/kline/FrameExchange.h"

#include <algorithm>
#include <chrono>

#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {
namespace {

// An ECU waits for the next byte of a request for 20 ms (P4max), which begins after 5 ms (P4min).
constexpr std::chrono::milliseconds kLongestHoldUp{10};
constexpr char kTruncated[] = "a truncated frame";

}  // namespace

FrameExchange::FrameExchange(Addresses addresses, base::Duration byte_time, EchoFilter& echo)
    : addresses_(addresses), byte_time_(byte_time), echo_(echo) {}

void FrameExchange::Start(base::ByteView message, HeaderForm form, const KLineTiming& timing,
                          base::TimePoint now, bool own) {
  timing_ = timing;
  own_ = own;
  service_ = message[0];
  form.functional = addresses_.functional;
  base::ByteBuffer frame = BuildFrame(form, addresses_.ecu, addresses_.tester, message);
  echo_.Expect(frame.View());
  sender_.Start(std::move(frame), now, byte_time_, timing.p4_min);
  reader_.Reset();
  outcome_ = Outcome::kUnderWay;
  sent_told_ = false;
  hunting_ = false;
  damage_ = nullptr;
  foreign_message_ = false;
  messages_.clear();
}

base::ByteView FrameExchange::TakeBytes(base::TimePoint now) {
  if (outcome_ == Outcome::kUnderWay && sender_.IsLate(now, kLongestHoldUp)) {
    outcome_ = Outcome::kHeldUp;
    sender_.Stop();
  }
  const base::ByteView bytes = sender_.Take(now);
  if (!bytes.empty()) Written(now);
  return bytes;
}

void FrameExchange::Written(base::TimePoint now) {
  if (outcome_ != Outcome::kUnderWay) return;
  sender_.Written(now);
  if (!sender_.IsDone()) return;
  // A byte is heard when it has ended.
  wait_ = AnswerWait({timing_.p2_max + byte_time_, timing_.p2_star + byte_time_, timing_.pending_cap},
                     sender_.End());
}

void FrameExchange::BytesArrived(base::ByteView bytes, base::TimePoint now) {
  if (outcome_ != Outcome::kUnderWay) return;
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
  return reader_.Target() == addresses_.tester &&
         (addresses_.any_answer || reader_.Source() == addresses_.ecu);
}

void FrameExchange::FrameArrived(base::TimePoint now) {
  if (!IsForUs() || !sender_.IsDone()) return;
  const base::ByteView message = reader_.Message();
  messages_.emplace_back(message);
  answered_by_ = reader_.HasAddresses() ? std::optional(reader_.Source()) : std::nullopt;
  if (!own_) return;
  if (IsPendingTo(service_, message)) {
    wait_.AskedForTime(now);
  } else if (IsPositiveTo(service_, message) || IsNegativeTo(service_, message)) {
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

std::optional<base::TimePoint> FrameExchange::Due() const {
  if (outcome_ != Outcome::kUnderWay) return std::nullopt;
  if (!sender_.IsDone()) return sender_.Due();
  return sent_told_ || echo_.IsMissing() ? std::nullopt : std::optional(sender_.End());
}

// A frame may end after the answer is due if it began before that; what is no frame may not.
std::optional<base::TimePoint> FrameExchange::Deadline() const {
  if (outcome_ != Outcome::kUnderWay || !sender_.IsDone()) return std::nullopt;
  if (reader_.IsInside()) return Silence();
  if (!own_) return hunting_ ? std::optional(Silence()) : std::nullopt;
  return hunting_ ? std::min(Silence(), wait_.Deadline()) : wait_.Deadline();
}

// When no byte can follow what was heard last in the same frame.
base::TimePoint FrameExchange::Silence() const { return last_byte_ + timing_.p1_max + byte_time_; }

std::optional<base::TimePoint> FrameExchange::ReceivingUntil() const {
  return reader_.IsInside() ? std::optional(Silence()) : std::nullopt;
}

std::string FrameExchange::WhyNoAnswer(bool heard) const {
  if (outcome_ == Outcome::kDisturbed) return "the echo is not what was sent: another tester is on the line";
  if (outcome_ == Outcome::kNoEcho || echo_.IsMissing()) return kNoEchoText;
  if (Damage() != nullptr) return std::string("the answer was damaged, it has ") + Damage();
  const bool has_echo = echo_.State() != EchoFilter::Echo::kOff;
  return heard || !has_echo ? "no answer" : "no answer and no echo: check cable and ignition";
}

const char* FrameExchange::Damage() const { return reader_.IsInside() ? kTruncated : damage_; }

void FrameExchange::TimeElapsed(base::TimePoint now) {
  const auto deadline = Deadline();
  if (!deadline || now < *deadline) return;
  if (reader_.IsInside() || hunting_) EndFrame();
  if (own_ && now >= wait_.Deadline()) EndExchange();
}

// The line has been silent for so long that the next byte begins a frame.
void FrameExchange::EndFrame() {
  if (reader_.IsInside()) damage_ = kTruncated;
  reader_.Reset();
  hunting_ = false;
}

void FrameExchange::EndExchange() {
  if (echo_.IsMissing()) {
    outcome_ = Outcome::kNoEcho;
  } else if (foreign_message_) {
    outcome_ = Outcome::kForeign;
  } else {
    outcome_ = damage_ != nullptr ? Outcome::kDamaged : Outcome::kSilent;
  }
}

}  // namespace korval::ecu
