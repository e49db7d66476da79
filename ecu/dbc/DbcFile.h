// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ecu/can/CanFrame.h"

namespace korval::ecu {

/// The messages and signals of a DBC file: statements BO_, SG_, VAL_, SIG_VALTYPE_ and the attribute
/// GenMsgCycleTime. Other statements are passed over. What is damaged, or means something that is not
/// understood (CAN FD, multiplexors below multiplexors), is left out with a note.
struct DbcFile {
  enum class Number { kInteger, kFloat, kDouble };
  struct Text {
    std::int64_t raw = 0;
    std::string text;
  };
  struct Signal {
    std::string name;
    /// Of the least significant bit of an Intel signal, of the most significant bit of a Motorola one; bit 0
    /// is the least significant of byte 1, bit 8 that of byte 2.
    std::size_t start_bit = 0;
    std::size_t bits = 0;  ///< 1 to 64; inside the message
    bool intel = true;     ///< little-endian
    bool is_signed = false;
    Number number = Number::kInteger;
    double factor = 1;  ///< not 0
    double offset = 0;
    std::string unit;
    std::vector<Text> texts;
    bool is_multiplexor = false;
    /// The signal is there when the message's multiplexor has this value.
    std::optional<std::int64_t> multiplexed_at;

    /// The place of a Motorola signal's first bit, counted from the most significant bit of byte 1.
    std::size_t MotorolaFirstBit() const { return start_bit / 8 * 8 + 7 - start_bit % 8; }
  };
  struct Message {
    std::string name;
    CanIdentifier identifier;
    std::size_t length = 0;     ///< 0 to 8 bytes
    std::int32_t cycle_ms = 0;  ///< 0: unknown
    std::vector<Signal> signals;
  };

  std::vector<Message> messages;
  /// A sentence each, with the number of the line.
  std::vector<std::string> notes;

  /// Reads a file's content, which is in windows-1252.
  static DbcFile Read(std::string_view content);
};

}  // namespace korval::ecu
