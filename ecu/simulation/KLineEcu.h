// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/kline/FrameReader.h"
#include "ecu/kline/LineAgreement.h"
#include "ecu/simulation/SimulatedEcu.h"

namespace korval::ecu {

/// The simulated ECU at the far end of a K-line, below the framing (ISO 14230-2): bytes arrive and bytes are
/// written, in time. It starts the communication the way the ECU file says, answers by the simulated ECU
/// after P2min or its latency, whichever is longer, and falls silent after P3max without a request. Answers
/// have the header form of their requests. What the file wants to go wrong on the wire does.
class KLineEcu {
 public:
  using Write = std::function<void(base::ByteView)>;

  KLineEcu(std::shared_ptr<base::EventLoop> loop, const FunctionDescription& function,
           std::shared_ptr<SimulatedEcu> ecu, Write write);
  KLineEcu(const KLineEcu&) = delete;
  KLineEcu& operator=(const KLineEcu&) = delete;

  /// Returns what it hears, as an adapter on a single wire does.
  void SetEcho(bool echo) { echo_ = echo; }
  /// A line that can be pulled low wakes the ECU up without bytes: the 5-baud address, when it is whole.
  void AddressArrived(std::uint8_t address);
  void BytesArrived(base::ByteView bytes);
  /// The line went low for longer than a byte is; a byte 00 while the ECU sleeps is taken for that, too. Lows
  /// that are its 5-baud address wake it up.
  void LineWentLow();
  /// The speed at which it talks and listens.
  std::int32_t Baud() const { return agreement_.Baud(); }

 private:
  enum class State { kAsleep, kAwaitsKeyByte, kTalking };
  struct Outgoing {
    base::TimePoint due;
    base::ByteBuffer bytes;
    base::ByteBuffer request;  // that takes effect with this answer
  };

  void ByteArrived(std::uint8_t byte, base::TimePoint now);
  void KeyByteArrived(std::uint8_t byte, base::TimePoint now);
  void FrameArrived(base::TimePoint now);
  bool IsForUs() const;
  bool UnderstandsHeader() const;
  void StartCommunication(base::TimePoint now);
  void StopCommunication(base::TimePoint now);
  void AccessTiming(base::ByteView request, base::TimePoint now);
  void Answer(base::ByteView request, base::TimePoint now);
  void AnswerFaulty(WireFault fault, base::ByteView message, std::uint8_t service, base::TimePoint due);

  base::ByteBuffer Framed(base::ByteView message) const;
  void SendAt(base::TimePoint due, base::ByteBuffer bytes, base::ByteView request = {});
  void FallAsleep();
  void JudgeLows();
  void SendDue();
  void AwaitMore();
  void SilenceElapsed();

  std::shared_ptr<base::EventLoop> loop_;
  FunctionDescription function_;
  std::shared_ptr<SimulatedEcu> ecu_;
  Write write_;
  bool echo_ = false;
  State state_ = State::kAsleep;
  LineAgreement agreement_;
  FrameReader reader_;
  HeaderForm form_;  // of the last request
  base::TimePoint last_byte_{};
  base::TimePoint last_talk_{};  // in either direction
  std::deque<Outgoing> outgoing_;
  std::unique_ptr<base::Timer> timer_;
  std::vector<base::TimePoint> lows_;
  std::unique_ptr<base::Timer> lows_end_;
  std::unique_ptr<base::Deadline> silence_;  // that ends a request, or the communication
};

}  // namespace korval::ecu
