// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "base/EventLoop.h"
#include "ecu/isotp/IsoTpEndpoint.h"
#include "ecu/simulation/SimulatedEcu.h"

namespace korval::ecu {

/// A simulated ECU on a CAN bus, below the framing: frames go in and out, by the real ISO 15765-2.
class IsoTpEcu {
 public:
  using SendFrame = std::function<void(const CanFrame&)>;

  /// When the answer comes that a wire fault makes late, and the one behind "response pending".
  static constexpr Milliseconds kLate{2000};
  static constexpr Milliseconds kPending{200};

  /// `parameters` are the ECU's side of IsoTpParameters. `send` may confirm a frame from inside.
  IsoTpEcu(const std::shared_ptr<base::EventLoop>& loop, std::shared_ptr<SimulatedEcu> ecu,
           const IsoTpParameters& parameters, SendFrame send);
  IsoTpEcu(const IsoTpEcu&) = delete;
  IsoTpEcu& operator=(const IsoTpEcu&) = delete;

  /// Any frame of the bus.
  void FrameArrived(const CanFrame& frame) { endpoint_.FrameArrived(frame); }
  /// Every frame sent so far is on the bus.
  void FramesSent() { endpoint_.FramesSent(); }

 private:
  IsoTpEndpoint::Events EndpointEvents();
  void SendFrameOfAnswer(CanFrame frame);
  void SendForeignFrame();
  void RequestArrived(base::ByteView request);
  Milliseconds DelayOf(std::optional<WireFault> fault) const;
  void SendAnswer();

  std::shared_ptr<base::EventLoop> loop_;
  std::shared_ptr<SimulatedEcu> ecu_;
  SendFrame send_;
  IsoTpEndpoint endpoint_;
  base::ByteBuffer answer_;
  bool damage_ = false;  // the next frame that can be
  std::unique_ptr<base::Timer> latency_timer_;
};

}  // namespace korval::ecu
