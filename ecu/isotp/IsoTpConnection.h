// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "ecu/can/CanFrame.h"
#include "ecu/isotp/IsoTpReceiver.h"
#include "ecu/isotp/IsoTpSender.h"

namespace korval::ecu {

/// Both directions of ISO 15765-2 between one tester and one ECU, full duplex: from messages to CAN frames
/// and back. A pure state machine. After each call the frames that are due are taken until there is none,
/// then the message and the error.
class IsoTpConnection {
 public:
  explicit IsoTpConnection(const IsoTpParameters& parameters) : parameters_(parameters) {}
  IsoTpConnection(const IsoTpConnection&) = delete;
  IsoTpConnection& operator=(const IsoTpConnection&) = delete;

  const IsoTpParameters& Parameters() const { return parameters_; }

  /// Sends a message that is not empty, in place of one that is under way.
  void Send(base::ByteView message, base::TimePoint now) { sender_.Start(message, now); }
  /// Forgets what is under way in both directions.
  void Stop();

  /// False when the frame is not this connection's, or nothing that can be read.
  bool FrameArrived(const CanFrame& frame, base::TimePoint now);
  /// Every frame taken so far is on the bus.
  void FramesSent(base::TimePoint now);
  void TimeElapsed(base::TimePoint now);

  /// A message is going out; a message is coming in.
  bool IsSending() const { return sender_.IsBusy(); }
  bool IsReceiving() const { return receiver_.IsBusy(); }

  std::optional<CanFrame> TakeFrame(base::TimePoint now);
  std::optional<base::ByteBuffer> TakeMessage() { return receiver_.TakeMessage(); }
  std::optional<IsoTpError> TakeError();
  /// When TakeFrame is due. Of this and the deadline there is one at least while something is under way.
  std::optional<base::TimePoint> Due() const;
  /// When TimeElapsed is due. Every frame that came until the deadline has arrived then.
  std::optional<base::TimePoint> Deadline() const;

 private:
  CanFrame FrameOf(base::ByteView pdu) const;

  const IsoTpParameters parameters_;
  IsoTpSender sender_{parameters_};
  IsoTpReceiver receiver_{parameters_};
};

}  // namespace korval::ecu
