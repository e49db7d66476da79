// SPDX-License-Identifier: MIT
// A record of everything on the vehicle's bus, for whoever has to find out afterwards who said what and when.
// One line a frame or a piece of K-line traffic:
//   (1794650400.123456) can0 7E0#021A900000000000 T         candump's log format, T sent, R received
//   (1794650400.123456) /dev/ttyUSB0 T 81 10 F1 81 03       K-line bytes in hexadecimal
//   (1794650400.123456) /dev/ttyUSB0 T low                  the line is pulled low, or rises again (high)
// The time is seconds since 1970 (UTC) with microseconds; 29-bit identifiers have eight digits.
#pragma once

#include <chrono>
#include <cstddef>
#include <fstream>
#include <functional>
#include <string>

#include "base/ByteBuffer.h"
#include "ecu/can/CanFrame.h"

namespace korval::ecu {

/// The system's clock: time since 1970.
std::chrono::microseconds SystemTime();

/// Lines go to the file at once, so that it is complete when the program ends in whatever way. A file that
/// has reached its limit becomes FILE.1, in place of the one before.
class BusLog {
 public:
  enum class Direction : char { kSent = 'T', kReceived = 'R' };
  struct Settings {
    std::string path;
    std::size_t limit = std::size_t{10} * 1024 * 1024;  ///< bytes, 1 or more
    std::function<std::chrono::microseconds()> now = SystemTime;
    /// Told once, in a sentence, when lines can no longer be written. May be empty.
    std::function<void(const std::string&)> on_trouble;
  };

  /// Goes on with a file that exists. Raises Failure when it cannot be written, or is a pipe.
  explicit BusLog(Settings settings);

  void Record(const std::string& bus, Direction direction, const CanFrame& frame);
  void Record(const std::string& line, Direction direction, base::ByteView bytes);
  void RecordLevel(const std::string& line, bool low);

 private:
  void Open();
  void Rotate();
  void Write(const std::string& bus, const std::string& rest);
  void GiveUp(const std::string& why);

  Settings settings_;
  std::ofstream file_;
  std::size_t size_ = 0;
};

}  // namespace korval::ecu
