// SPDX-License-Identifier: MIT
#pragma once

#include "fuzz/CheckedReply.h"
#include "tests/support/FakeSerialPort.h"

namespace korval::fuzz {

/// A serial port in memory that checks every reply at once and keeps none.
class CheckedSerialPort : public tests::FakeSerialPort {
 public:
  using FakeSerialPort::FakeSerialPort;

  void Write(base::ByteView bytes) override { RequireReply(bytes); }
};

}  // namespace korval::fuzz
