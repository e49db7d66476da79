// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "ecu/buslog/BusLog.h"
#include "ecu/kline/KLineWire.h"

namespace korval::ecu {

/// A K-line whose bytes are recorded on their way.
class TracedKLineWire : public KLineWire {
 public:
  TracedKLineWire(std::unique_ptr<KLineWire> wire, std::shared_ptr<BusLog> log, std::string name)
      : log_(std::move(log)), name_(std::move(name)), wire_(std::move(wire)) {}

  void SetEvents(Events events) override {
    auto on_bytes = std::move(events.on_bytes);
    events.on_bytes = [log = log_, name = name_, on_bytes = std::move(on_bytes)](base::ByteView bytes) {
      log->Record(name, BusLog::Direction::kReceived, bytes);
      on_bytes(bytes);
    };
    wire_->SetEvents(std::move(events));
  }
  void Open(std::int32_t baud) override { wire_->Open(baud); }
  bool SetBreak(bool low) override {
    if (!wire_->SetBreak(low)) return false;
    if (std::exchange(low_, low) != low) log_->RecordLevel(name_, low);
    return true;
  }
  bool HoldsBreak() const override { return wire_->HoldsBreak(); }
  bool SetModemLines(std::optional<bool> rts, std::optional<bool> dtr) override {
    return wire_->SetModemLines(rts, dtr);
  }
  void Write(base::ByteView bytes) override {
    log_->Record(name_, BusLog::Direction::kSent, bytes);
    wire_->Write(bytes);
  }
  void Close() override { wire_->Close(); }

 private:
  std::shared_ptr<BusLog> log_;
  std::string name_;
  std::unique_ptr<KLineWire> wire_;
  bool low_ = false;
};

}  // namespace korval::ecu
