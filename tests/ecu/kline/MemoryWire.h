// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/kline/KLineWire.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::ecu {

/// Both ends of a K-line. A byte is on the line as long as its speed says, in either direction.
class MemoryLine {
 public:
  enum class Who { kTester, kEcu };
  struct Entry {
    base::TimePoint begin;
    base::TimePoint end;
    Who who;
    std::uint8_t byte;
    std::int32_t baud;
  };
  struct Edge {
    base::TimePoint time;
    bool low;
  };

  explicit MemoryLine(std::shared_ptr<tests::ManualEventLoop> event_loop) : loop(std::move(event_loop)) {}

  /// From now on, byte by byte behind what the ECU is already sending.
  void EcuWrites(base::ByteView bytes) {
    for (const std::uint8_t byte : bytes) ecu_end_ = Transmit(Who::kEcu, byte, ecu_end_);
  }
  void EcuWrites(const std::string& hex) { EcuWrites(base::ByteBuffer::FromHex(hex).View()); }
  void TesterWrites(base::ByteView bytes) {
    for (const std::uint8_t byte : bytes) tester_end_ = Transmit(Who::kTester, byte, tester_end_);
  }
  base::Duration ByteTime() const { return std::chrono::nanoseconds(10000000000LL / baud); }
  /// Everything one end has begun to say, as hexadecimal digits.
  std::string Said(Who who) const {
    base::ByteBuffer said;
    for (const Entry& entry : log) {
      if (entry.who == who) said.Append(entry.byte);
    }
    return said.ToHex();
  }
  /// The adapter is pulled out, or put back.
  void Unplug() {
    plugged = false;
    open = false;
    holder = nullptr;
    if (events.on_lost) events.on_lost("the adapter was unplugged");
  }

  std::shared_ptr<tests::ManualEventLoop> loop;
  KLineWire::Events events;
  std::function<void(base::ByteView)> ecu_hears = [](base::ByteView) {};
  std::function<std::int32_t()> ecu_baud = [this] { return baud; };
  bool echo = true;
  bool has_break = true;
  bool holds_break = true;
  bool has_modem_lines = true;
  bool plugged = true;
  bool open = false;
  const void* holder = nullptr;   // the wire that has the device
  std::int32_t refused_baud = 0;  // the chip does not know it
  std::int32_t baud = 10400;
  std::vector<Entry> log;
  std::vector<Edge> edges;
  std::vector<Edge> rts;  // low: on
  std::vector<Edge> dtr;

 private:
  base::TimePoint Transmit(Who who, std::uint8_t byte, base::TimePoint busy_until) {
    const base::TimePoint begin = std::max(loop->Now(), busy_until);
    const base::TimePoint end = begin + ByteTime();
    log.push_back({begin, end, who, byte, baud});
    loop->At(end - loop->Now(), [this, who, byte, sent_at = baud] {
      const base::ByteBuffer bytes{byte};
      const bool near_hears = open && (who == Who::kEcu || echo);
      if (near_hears) events.on_bytes(bytes.View());
      // At another speed it is a low level at most.
      const bool heard = byte == 0 || sent_at == ecu_baud();
      if (who == Who::kTester && heard) ecu_hears(bytes.View());
    });
    return end;
  }

  base::TimePoint ecu_end_{};
  base::TimePoint tester_end_{};
};

/// The near end; as with a device, there is one at a time.
class MemoryWire : public KLineWire {
 public:
  explicit MemoryWire(std::shared_ptr<MemoryLine> line) : line_(std::move(line)) {}
  ~MemoryWire() override { MemoryWire::Close(); }
  MemoryWire(const MemoryWire&) = delete;
  MemoryWire& operator=(const MemoryWire&) = delete;

  void SetEvents(Events events) override { line_->events = std::move(events); }
  void Open(std::int32_t baud) override {
    if (!line_->plugged) throw base::Failure("there is no such device; plug the adapter in");
    if (line_->holder != nullptr && line_->holder != this) throw base::Failure("another program has it");
    line_->open = baud != line_->refused_baud;
    line_->holder = line_->open ? this : nullptr;
    if (!line_->open) throw base::Failure(kInterfaceRefused, "the line cannot be set to this speed");
    line_->baud = baud;
  }
  bool SetBreak(bool low) override {
    if (line_->has_break) line_->edges.push_back({line_->loop->Now(), low});
    return line_->has_break;
  }
  bool HoldsBreak() const override { return line_->holds_break; }
  bool SetModemLines(std::optional<bool> rts, std::optional<bool> dtr) override {
    if (!line_->has_modem_lines) return false;
    if (rts) line_->rts.push_back({line_->loop->Now(), *rts});
    if (dtr) line_->dtr.push_back({line_->loop->Now(), *dtr});
    return true;
  }
  void Write(base::ByteView bytes) override { line_->TesterWrites(bytes); }
  void Close() override {
    if (line_->holder != this) return;
    line_->open = false;
    line_->holder = nullptr;
  }

 private:
  std::shared_ptr<MemoryLine> line_;
};

}  // namespace korval::ecu
