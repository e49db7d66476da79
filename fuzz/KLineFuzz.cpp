// SPDX-License-Identifier: MIT
// Any bytes, requests and times at our end of a K-line. The first byte is how the ECU file has it (see
// FunctionOf), then events: one byte says which, as Event has it, others what with. The frame reader sees the
// same bytes.
#include <algorithm>
#include <chrono>

#include "ecu/kline/FrameReader.h"
#include "ecu/kline/KLineTester.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file
using ecu::FunctionDescription;

enum Event : std::uint8_t { kBytes, kAnswer, kEcho, kTime, kDeadline, kSend, kConnect, kStop, kEvents };

FunctionDescription FunctionOf(unsigned flags) {
  FunctionDescription function;
  ecu::KLineDescription kline;
  kline.init = static_cast<ecu::KLineDescription::Init>(flags % 3);
  kline.echo = static_cast<ecu::KLineDescription::Echo>(flags / 4 % 3);
  function.links = {kline};
  if ((flags & 16) != 0) function.timing.p4 = 0;
  if ((flags & 32) != 0) function.timing.p3 = 0;
  return function;
}

// Short ones mostly, for a long one takes a step for each byte; the longest are too long to be sent.
std::size_t LengthOf(std::uint8_t byte) { return byte < 0xF8 ? 1U + byte % 8U : 50U + (byte - 0xF8U) * 30U; }

/// Whatever the reader takes for a frame is one: built anew it has the same bytes.
class CheckedReader {
 public:
  void Add(std::uint8_t byte) {
    if (!reader_.IsInside()) bytes_.Clear();
    bytes_.Append(byte);
    const auto result = reader_.Add(byte);
    fuzz::Require(bytes_.Length() <= 4 + ecu::kLongestKLineMessage + 1, "a frame has an end");
    if (result != ecu::FrameReader::Result::kFrame) return;
    base::ByteBuffer built =
        ecu::BuildFrame(reader_.Form(), reader_.Target(), reader_.Source(), reader_.Message());
    const std::size_t last = built.Length() - 1;
    const std::uint8_t functional = static_cast<std::uint8_t>(bytes_.At(0) - built.At(0));
    built.SetAt(0, bytes_.At(0));
    built.SetAt(last, static_cast<std::uint8_t>(built.At(last) + functional));
    fuzz::Require(functional == 0 || functional == 0x40, "but for functional addressing");
    fuzz::Require(built == bytes_, "a frame is what building makes");
  }

 private:
  ecu::FrameReader reader_;
  base::ByteBuffer bytes_;
};

/// A tester whose outputs are taken and checked after every event.
class Tester {
 public:
  explicit Tester(fuzz::Input& input) : flags_(input.Byte()), tester_(FunctionOf(flags_), ecu::Kwp2000()) {
    Connect();
    TakeOutputs();
  }

  void Happen(fuzz::Input& input) {
    switch (input.Byte() % kEvents) {
      case kBytes:
        Hear(input.Take(input.Byte()));
        break;
      case kAnswer: {
        const base::ByteView message = input.Take(1 + input.Byte() % ecu::kLongestKLineMessage);
        if (!message.empty()) Hear(ecu::BuildFrame({true, true}, 0xF1, 0x10, message).View());
        break;
      }
      case kEcho:
        Hear(base::ByteBuffer(written_.View()).View());
        written_.Clear();
        break;
      case kTime:
        now_ += std::chrono::microseconds(input.Word() * 50);
        tester_.TimeElapsed(now_);
        break;
      case kDeadline:
        ToDeadline();
        break;
      case kSend:
        Send(input);
        break;
      case kConnect:
        Connect();
        break;
      default:
        tester_.Stop(now_, now_);
        break;
    }
    TakeOutputs();
  }

  /// Whatever is under way ends by its own deadlines.
  void RunOut() {
    static constexpr int kMostSteps = 300;  // a request of 260 bytes with P4
    for (int steps = 0; tester_.IsBusy(); ++steps) {
      fuzz::Require(steps < kMostSteps, "what is under way ends");
      ToDeadline();
      TakeOutputs();
    }
  }

 private:
  void Connect() {
    const auto means = (flags_ & 64) == 0 ? ecu::WakeUp::Means::kBreak : ecu::WakeUp::Means::kNone;
    tester_.Connect(now_, now_, means, false);
  }
  void Hear(base::ByteView bytes) {
    for (const std::uint8_t byte : bytes) reader_.Add(byte);
    tester_.BytesArrived(bytes, now_);
  }
  void Send(fuzz::Input& input) {
    if (tester_.IsBusy() || !tester_.IsConnected()) return;
    base::ByteBuffer message(input.Take(6));
    message.SetLength(LengthOf(input.Byte()));
    tester_.Send(message.View(), now_, now_);
  }
  void ToDeadline() {
    const auto due = tester_.Due();
    const auto deadline = tester_.Deadline();
    if (!due && !deadline) return tester_.Rest();  // P2 has passed
    fuzz::Require(tester_.IsBusy(), "nothing is due when nothing is under way");
    if (due) {
      now_ = std::max(now_, *due);
      tester_.MoveOn(now_);
    } else if (deadline) {
      now_ = std::max(now_, *deadline);
      tester_.TimeElapsed(now_);
    }
  }
  void TakeOutputs() {
    while (const auto action = tester_.TakeAction()) {
      fuzz::Require((action->kind == ecu::KLineTester::Action::Kind::kWrite) != action->bytes.Empty(),
                    "an action writes or sets the level");
      written_.Append(action->bytes.View());
      if (!action->bytes.Empty()) tester_.Written(now_);
    }
    while (const auto event = tester_.TakeEvent()) {
      const bool message = event->kind == ecu::KLineTester::Event::Kind::kMessage;
      fuzz::Require(message != event->message.Empty(), "a message has bytes");
      fuzz::Require(event->message.Length() <= ecu::kLongestKLineMessage, "and no more than fit");
      fuzz::Require(event->text.size() < 300, "what is said of a failure has an end");
    }
  }

  unsigned flags_;
  base::TimePoint now_{std::chrono::seconds(1)};
  ecu::KLineTester tester_;
  CheckedReader reader_;
  base::ByteBuffer written_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  Tester tester(input);
  while (!input.Empty()) tester.Happen(input);
  tester.RunOut();
  return 0;
}
