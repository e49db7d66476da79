// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/kline/EchoFilter.h"
#include "ecu/kline/FrameReader.h"
#include "ecu/kline/KLineTiming.h"
#include "ecu/kline/PacedSender.h"
#include "ecu/link/AnswerWait.h"

namespace korval::ecu {

/// A request frame on its way out and the frames that come back, P1 and P4 of ISO 14230-2 kept. A pure state
/// machine. Which message answers a request, and how long that is waited for, the services above the line
/// know; for the requests of the line itself this does. Bytes may be looked at late: what arrives never ends
/// anything by its time, only TimeElapsed does, and a frame whose bytes are all there counts.
class FrameExchange {
 public:
  enum class Outcome {
    kUnderWay,
    kAnswered,
    kForeign,    ///< only messages that belong to something else
    kSilent,     ///< no frame for us in time
    kDamaged,    ///< a frame that was none
    kNoEcho,     ///< the adapter did not return what was sent
    kDisturbed,  ///< the adapter returned something else: somebody spoke at the same time
    kHeldUp      ///< the request has a gap in which the ECU gave it up: it was not sent to its end
  };
  struct Addresses {
    std::uint8_t ecu;
    std::uint8_t tester;
    bool functional = false;  ///< `ecu` is that of a group
    bool any_answer = false;  ///< whichever ECU answers is taken
  };

  static constexpr char kNoEchoText[] = "no echo: check cable and ignition";

  /// Of nothing yet. The echo's state outlives it.
  FrameExchange(Addresses addresses, base::Duration byte_time, EchoFilter& echo);

  void SetAddresses(Addresses addresses) { addresses_ = addresses; }
  void SetByteTime(base::Duration byte_time) { byte_time_ = byte_time; }
  /// `own`: a request of the line itself. Another one is under way until somebody starts the next.
  void Start(base::ByteView message, HeaderForm form, const KLineTiming& timing, base::TimePoint now,
             bool own = true);
  /// What is to be written now; empty: nothing.
  base::ByteView TakeBytes(base::TimePoint now);
  /// What was taken last has been written, which may have taken its time.
  void Written(base::TimePoint now);
  void BytesArrived(base::ByteView bytes, base::TimePoint now);
  void TimeElapsed(base::TimePoint now);
  /// Whether the frame is out, its echo included where there is one; holds once.
  bool TakeSent(base::TimePoint now);
  /// The messages for us since the last call: the answer, "response pending", foreign ones.
  std::vector<base::ByteBuffer> TakeMessages() { return std::exchange(messages_, {}); }

  Outcome CurrentOutcome() const { return outcome_; }
  /// When TakeBytes or TakeSent is due; none behind that.
  std::optional<base::TimePoint> Due() const;
  /// When TimeElapsed is due; none before everything is sent, and while nothing is awaited.
  std::optional<base::TimePoint> Deadline() const;
  /// When the frame that is coming in ends at the latest; none between frames.
  std::optional<base::TimePoint> ReceivingUntil() const;
  /// When what was sent so far has left.
  base::TimePoint SentUntil() const { return sender_.End(); }
  /// The ECU that the last message for us came from; none when its header had no addresses.
  std::optional<std::uint8_t> AnsweredBy() const { return answered_by_; }
  /// Why there is no answer, or none yet, in a few words. `heard`: there was something on the line.
  std::string WhyNoAnswer(bool heard) const;
  /// What was wrong with the last damaged frame, or is with the one that has not ended; null: nothing.
  const char* Damage() const;

 private:
  void ReadByte(std::uint8_t byte, base::TimePoint now);
  base::TimePoint Silence() const;
  void EndFrame();
  void EndExchange();
  void FrameArrived(base::TimePoint now);
  bool IsForUs() const;

  Addresses addresses_;
  base::Duration byte_time_;
  EchoFilter& echo_;
  KLineTiming timing_{};
  PacedSender sender_;
  FrameReader reader_;
  Outcome outcome_ = Outcome::kSilent;
  std::uint8_t service_ = 0;  // of the request
  bool own_ = true;
  AnswerWait wait_;  // of an own request
  base::TimePoint last_byte_{};
  bool sent_told_ = false;
  bool hunting_ = false;  // nothing is a frame before the next silence
  const char* damage_ = nullptr;
  bool foreign_message_ = false;
  std::optional<std::uint8_t> answered_by_;
  std::vector<base::ByteBuffer> messages_;
};

}  // namespace korval::ecu
