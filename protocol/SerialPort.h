// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "base/ByteBuffer.h"

namespace korval::protocol {

/// What a serial port reports, with the numbers of the comm events.
enum class CommEvent : std::int32_t {
  kSend = 1,
  kReceive = 2,
  kBreak = 1001,
  kCtsTimeout = 1002,
  kDsrTimeout = 1003,
  kFraming = 1004,
  kOverrun = 1006,
  kCarrierDetectTimeout = 1007,
  kReceiveBufferOverflow = 1008,
  kParity = 1009,
  kTransmitBufferFull = 1010,
  kDcbError = 1011
};

/// The seam to the RS232 port of the client (`MSComm1`). Events come from the event loop; bytes that the
/// driver held when a base::Deadline fell due are announced before that deadline.
class SerialPort {
 public:
  using OnComm = std::function<void(CommEvent)>;

  virtual ~SerialPort() = default;
  virtual void SetOnComm(OnComm on_comm) = 0;

  /// Takes effect at the next Open.
  virtual void SetPortNumber(std::int32_t number) = 0;
  virtual std::int32_t PortNumber() const = 0;
  /// Speed, parity letter (n, e, o, m or s, either case), data bits (4 to 8) and stop bits (1, 1.5 or 2),
  /// as in "9600,n,8,1". Raises Failure for a text that is no such setting.
  virtual void SetSettings(const std::string& settings) = 0;
  virtual std::string Settings() const = 0;
  /// 0 none, 1 Xon/Xoff, 2 RTS, 3 Xon/RTS. Raises Failure for any other code.
  virtual void SetHandshaking(std::int32_t code) = 0;
  virtual std::int32_t Handshaking() const = 0;

  virtual bool IsOpen() const = 0;
  /// Raises Failure with the device, the reason and what to do.
  virtual void Open() = 0;
  virtual void Close() = 0;
  /// From now on each receive event stands for all received bytes, as raw bytes.
  virtual void DeliverRawBytes() = 0;
  /// Takes all bytes received so far.
  virtual base::ByteBuffer Read() = 0;
  virtual void Write(base::ByteView bytes) = 0;
};

}  // namespace korval::protocol
