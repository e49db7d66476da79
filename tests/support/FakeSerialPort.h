// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "protocol/SerialPort.h"
#include "tests/support/CallLog.h"

namespace korval::tests {

/// A serial port in memory. Logs "open", "close serial", "raw bytes" and "write HEX".
class FakeSerialPort : public protocol::SerialPort {
 public:
  explicit FakeSerialPort(CallLog& log) : log_(log) {}

  /// Bytes come in, from wherever the test likes, the middle of a handler included.
  void Arrive(const base::ByteBuffer& bytes) {
    input_.Append(bytes.View());
    on_comm_(protocol::CommEvent::kReceive);
  }
  void Report(protocol::CommEvent event) { on_comm_(event); }
  /// The device is pulled out while the port is open.
  void Unplug() {
    open_ = false;
    on_comm_(protocol::CommEvent::kDcbError);
  }
  /// Replies as hexadecimal text; forgets them.
  std::vector<std::string> TakeWritten() { return std::exchange(written_, {}); }

  /// When set, Open or Close raises Failure with this text.
  std::string open_failure;
  std::string close_failure;

  void SetOnComm(OnComm on_comm) override { on_comm_ = std::move(on_comm); }
  void SetPortNumber(std::int32_t number) override { number_ = number; }
  std::int32_t PortNumber() const override { return number_; }
  void SetSettings(const std::string& settings) override { settings_ = settings; }
  std::string Settings() const override { return settings_; }
  void SetHandshaking(std::int32_t code) override { handshaking_ = code; }
  std::int32_t Handshaking() const override { return handshaking_; }

  bool IsOpen() const override { return open_; }
  void Open() override {
    if (!open_failure.empty()) throw base::Failure(open_failure);
    log_.emplace_back("open");
    open_ = true;
  }
  void Close() override {
    if (!close_failure.empty()) throw base::Failure(close_failure);
    log_.emplace_back("close serial");
    open_ = false;
  }
  void DeliverRawBytes() override { log_.emplace_back("raw bytes"); }
  base::ByteBuffer Read() override { return std::exchange(input_, {}); }
  void Write(base::ByteView bytes) override {
    written_.push_back(base::HexText(bytes));
    log_.push_back("write " + written_.back());
  }

 private:
  CallLog& log_;
  OnComm on_comm_;
  std::int32_t number_ = 1;
  std::string settings_ = "9600,n,8,1";
  std::int32_t handshaking_ = 0;
  bool open_ = false;
  base::ByteBuffer input_;
  std::vector<std::string> written_;
};

}  // namespace korval::tests
