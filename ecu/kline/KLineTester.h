// SPDX-License-Identifier: MIT
// Our side of a K-line to one ECU (ISO 14230-2): initialisation, requests and answers, end of the
// communication. A pure state machine: bytes and the time go in; actions for the line, events and a deadline
// come out. It speaks when the line has been silent long enough, and never two things at a time.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/kline/EchoFilter.h"
#include "ecu/kline/EcuAwakening.h"
#include "ecu/kline/FrameExchange.h"
#include "ecu/kline/HeardBytes.h"
#include "ecu/kline/KLineTiming.h"
#include "ecu/kline/LineAction.h"
#include "ecu/kline/LineAgreement.h"
#include "ecu/kline/LineSilence.h"
#include "ecu/kline/StartAnswer.h"
#include "ecu/kline/WakeUp.h"
#include "ecu/link/ServiceNames.h"

namespace korval::ecu {

/// After each call the actions are taken until there is none, then the events.
class KLineTester {
 public:
  using Action = LineAction;
  struct Event {
    enum class Kind { kConnected, kSent, kMessage, kNote, kFailure };
    Kind kind;
    base::ByteBuffer message;
    std::int32_t number = 0;  ///< of the failure, see ErrorNumbers.h
    std::string text = {};    ///< of a note, or the step that failed and which bytes were heard
  };

  /// The names outlive it.
  KLineTester(const FunctionDescription& function, const ServiceNames& names);
  KLineTester(const KLineTester&) = delete;
  KLineTester& operator=(const KLineTester&) = delete;

  /// Initialises the ECU anew, once the line has been silent for TIdle; it was last busy at `quiet_since`.
  /// An ECU that was stopped in order takes a fast initialisation after P3 already. Where the line cannot be
  /// held low the fast initialisation wakes nobody up, and the 5-baud address goes as one byte.
  void Connect(base::TimePoint now, base::TimePoint quiet_since, WakeUp::Means means, bool was_stopped);
  /// Sends a message, once the line has been silent for P3, and hands on what comes back until Rest. Raises
  /// kValueRefused as an event for one that the ECU cannot take.
  void Send(base::ByteView message, base::TimePoint now, base::TimePoint quiet_since);
  /// Ends the communication with stopCommunication, if it stands; a request under way is given up. No event
  /// comes of it.
  void Stop(base::TimePoint now, base::TimePoint quiet_since);
  /// Nothing more is awaited of the last message.
  void Rest();
  /// Forgets everything that is under way, and the communication.
  void Abandon();

  void BytesArrived(base::ByteView bytes, base::TimePoint now);
  /// Does what is due.
  void MoveOn(base::TimePoint now);
  /// Ends what has not happened in time. Everything heard until the deadline has arrived.
  void TimeElapsed(base::TimePoint now);
  /// The bytes of the last action have been written, which may have taken its time.
  void Written(base::TimePoint now);

  std::optional<Action> TakeAction();
  std::optional<Event> TakeEvent();
  bool IsConnected() const { return connected_; }
  /// Whether the ECU has agreed to the end of the communication; holds once.
  bool TakeStopped() { return std::exchange(stopped_, false); }
  /// The speed at which the next message goes.
  std::int32_t Baud() const { return agreement_.Baud(); }
  /// Something is under way: the line is ours.
  bool IsBusy() const { return phase_ != Phase::kIdle; }
  /// When MoveOn is due. Of this and the deadline there is one at least while something is under way, but for
  /// a message that is out.
  std::optional<base::TimePoint> Due() const;
  /// When TimeElapsed is due.
  std::optional<base::TimePoint> Deadline() const;
  /// Until when at the latest the message that is under way goes out, or the step towards it takes; none:
  /// there is no message.
  std::optional<base::TimePoint> SendingUntil() const;
  /// Until when at the latest a frame is coming in; none: there is none.
  std::optional<base::TimePoint> ReceivingUntil() const;
  /// Why no answer has come to the last message, for all that was heard.
  std::string WhyNoAnswer() const;
  /// When the line was last busy.
  base::TimePoint QuietSince() const { return silence_.Since(); }
  /// P2 and P2* as agreed on, at the speed of the line.
  base::Duration AnswerTime() const { return agreement_.Times().p2_max + agreement_.ByteTime(); }
  base::Duration PendingTime() const { return agreement_.Times().p2_star + agreement_.ByteTime(); }
  const KLineTiming& ActiveTiming() const { return agreement_.Times(); }

 private:
  enum class Phase { kIdle, kSilence, kAwakening, kExchange };
  enum class Purpose { kInitialisation, kRequest, kStop };

  void Begin(Purpose purpose, base::Duration span, base::TimePoint now, base::TimePoint quiet_since);
  void AwaitSilence(base::Duration span, base::TimePoint now);
  void SilenceElapsed(base::TimePoint now);
  void Redo(base::TimePoint now);
  void WakeUpEcu(base::TimePoint now);
  void RunExchange(base::TimePoint now);
  void StartExchange(base::TimePoint now);
  void Write(base::ByteView bytes, base::TimePoint until);

  void Deliver();
  void TakeNote(base::ByteView answer);
  void FinishExchange(base::TimePoint now);
  void TalkToWhoAnswered();
  void Started(const StartAnswer& answer);

  void NotAnswered(const std::string& what);
  void Fail(std::int32_t number, const std::string& what);
  void Report(std::int32_t number, const std::string& what);
  std::string WhatFailed() const;
  base::Duration Time(Timing::Number Timing::*number) const { return function_.timing.Value(number); }

  FunctionDescription function_;
  const ServiceNames& names_;
  LineAgreement agreement_;
  EchoFilter echo_;
  FrameExchange exchange_;
  Phase phase_ = Phase::kIdle;
  Purpose purpose_ = Purpose::kInitialisation;
  bool connected_ = false;
  bool stopped_ = false;
  WakeUp::Means means_ = WakeUp::Means::kBreak;
  LineSilence silence_;
  bool broke_off_ = false;  // the handshake has, and is done anew
  int hold_ups_ = 0;        // how often the computer spoilt what was being sent
  std::optional<EcuAwakening> awakening_;
  base::ByteBuffer message_;
  HeardBytes heard_;
  LineActions actions_;
  std::deque<Event> events_;
};

}  // namespace korval::ecu
