// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "ecu/kline/KLineWire.h"
#include "platform/RealTime.h"

namespace korval::platform {

/// A K-line with real-time scheduling while it is open.
class RealTimeKLineWire : public ecu::KLineWire {
 public:
  RealTimeKLineWire(std::unique_ptr<ecu::KLineWire> wire, std::shared_ptr<RealTime> real_time)
      : real_time_(std::move(real_time)), wire_(std::move(wire)) {}

  void SetEvents(Events events) override {
    auto on_lost = std::move(events.on_lost);
    events.on_lost = [this, on_lost = std::move(on_lost)](const std::string& why) {
      held_.reset();
      on_lost(why);
    };
    wire_->SetEvents(std::move(events));
  }
  void Open(std::int32_t baud) override {
    held_.reset();
    wire_->Open(baud);
    held_ = real_time_->Hold();
  }
  bool SetBreak(bool low) override { return wire_->SetBreak(low); }
  bool HoldsBreak() const override { return wire_->HoldsBreak(); }
  bool SetModemLines(std::optional<bool> rts, std::optional<bool> dtr) override {
    return wire_->SetModemLines(rts, dtr);
  }
  void Write(base::ByteView bytes) override { wire_->Write(bytes); }
  void Close() override {
    wire_->Close();
    held_.reset();
  }

 private:
  std::shared_ptr<RealTime> real_time_;
  std::unique_ptr<ecu::KLineWire> wire_;
  std::shared_ptr<void> held_;
};

}  // namespace korval::platform
