// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "ecu/buslog/BusLog.h"
#include "ecu/can/CanBus.h"

namespace korval::ecu {

/// A CAN bus whose frames are recorded on their way.
class TracedCanBus : public CanBus {
 public:
  TracedCanBus(std::unique_ptr<CanBus> bus, std::shared_ptr<BusLog> log, std::string name)
      : log_(std::move(log)), name_(std::move(name)), bus_(std::move(bus)) {}

  void SetEvents(Events events) override {
    auto on_frame = std::move(events.on_frame);
    events.on_frame = [log = log_, name = name_, on_frame = std::move(on_frame)](const CanFrame& frame) {
      log->Record(name, BusLog::Direction::kReceived, frame);
      on_frame(frame);
    };
    bus_->SetEvents(std::move(events));
  }

  bool Send(const CanFrame& frame) override {
    const bool sent = bus_->Send(frame);
    if (sent) log_->Record(name_, BusLog::Direction::kSent, frame);
    return sent;
  }
  bool IsReady() const override { return bus_->IsReady(); }

 private:
  std::shared_ptr<BusLog> log_;
  std::string name_;
  std::unique_ptr<CanBus> bus_;
};

}  // namespace korval::ecu
