// SPDX-License-Identifier: MIT
// Any frames, requests, confirmations and times at one end of an ISO 15765-2 connection. The first 4 bytes
// are the parameters (flags, block size, STmin, wait frames), then events: one byte says which, as kEvents
// has it, others what with.
#include <algorithm>
#include <chrono>

#include "ecu/isotp/IsoTpConnection.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

enum Event : std::uint8_t { kFrame, kForeignFrame, kConfirm, kTime, kSend, kStop, kEvents };

constexpr std::size_t kLongestMessage = 5000;

ecu::IsoTpParameters ReadParameters(fuzz::Input& input) {
  ecu::IsoTpParameters parameters;
  const std::uint8_t flags = input.Byte();
  parameters.transmit = {0x7E0, (flags & 1) != 0};
  parameters.receive = {0x7E8, (flags & 1) != 0};
  if ((flags & 2) != 0) parameters.transmit_target = 0x10;
  if ((flags & 4) != 0) parameters.receive_target = 0xF1;
  if ((flags & 8) != 0) parameters.padding.reset();
  if ((flags & 16) != 0) parameters.separation = std::chrono::microseconds(100);
  if ((flags & 32) != 0) parameters.n_br = std::chrono::milliseconds(1);
  if ((flags & 64) != 0) parameters.longest_message = kLongestMessage;
  parameters.block_size = input.Byte();
  parameters.st_min = ecu::SeparationOf(input.Byte());
  parameters.most_waits = input.Byte();
  return parameters;
}

/// One end, whose outputs are taken and checked after every event.
class End {
 public:
  explicit End(fuzz::Input& input) : connection_(ReadParameters(input)) {}

  void Happen(fuzz::Input& input) {
    switch (input.Byte() % kEvents) {
      case kFrame:
        connection_.FrameArrived(Frame(input, connection_.Parameters().receive), now_);
        break;
      case kForeignFrame:
        fuzz::Require(!connection_.FrameArrived(Frame(input, {0x7E9, false}), now_),
                      "a foreign frame is none of its");
        break;
      case kConfirm:
        connection_.FramesSent(now_);
        break;
      case kTime:
        now_ += std::chrono::microseconds(input.Word() * 50);
        connection_.TimeElapsed(now_);
        break;
      case kSend:
        Send(input);
        break;
      default:
        connection_.Stop();
        break;
    }
    TakeOutputs();
  }

  /// Whatever is under way ends by its own deadlines.
  void RunOut() {
    for (int waits = 0; connection_.Due() || connection_.Deadline(); ++waits) {
      fuzz::Require(waits < 8, "what is under way ends");
      now_ = std::max(now_, *(connection_.Due() ? connection_.Due() : connection_.Deadline()));
      connection_.TimeElapsed(now_);
      TakeOutputs();
    }
    fuzz::Require(!connection_.IsSending() && !connection_.IsReceiving(), "without a deadline it is idle");
  }

 private:
  ecu::CanFrame Frame(fuzz::Input& input, ecu::CanIdentifier identifier) {
    const base::ByteView bytes = input.Take(input.Byte() % 9);
    return {identifier, bytes};
  }
  void Send(fuzz::Input& input) {
    base::ByteBuffer message(input.Take(1));
    message.SetLength(1 + input.Word() % kLongestMessage);
    connection_.Send(message.View(), now_);
  }
  void TakeOutputs() {
    const ecu::IsoTpParameters& parameters = connection_.Parameters();
    int frames = 0;
    while (const auto frame = connection_.TakeFrame(now_)) {
      fuzz::Require(++frames <= 2, "one frame of each direction waits for its confirmation");
      fuzz::Require(frame->identifier == parameters.transmit, "frames go to the other end");
      fuzz::Require(!parameters.padding || frame->length == 8, "padded frames are full");
    }
    if (const auto message = connection_.TakeMessage()) {
      fuzz::Require(!message->Empty() && message->Length() <= parameters.longest_message,
                    "messages keep their limit");
    }
    if (const auto error = connection_.TakeError())
      fuzz::Require(!error->text.empty(), "an error says what happened");
  }

  ecu::IsoTpConnection connection_;
  base::TimePoint now_{};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  End end(input);
  while (!input.Empty()) end.Happen(input);
  end.RunOut();
  return 0;
}
