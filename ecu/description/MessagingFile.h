// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ecu/can/CanFrame.h"
#include "ecu/description/ItemDescription.h"
#include "ecu/description/Milliseconds.h"
#include "ecu/description/TransportDescription.h"

namespace korval::ecu {

/// A CAN messaging file: who uses which identifiers, and the cyclic frames of the function "CAN".
struct MessagingFile {
  struct Diagnostic {
    std::string function;
    TransportDescription transport;  ///< with both identifiers
  };
  /// Frames of one identifier: all, or those in which the multiplexor has a value.
  struct Frame {
    struct Multiplexor {
      ItemDescription item;
      std::int64_t raw = 0;

      friend bool operator==(const Multiplexor&, const Multiplexor&) = default;
    };

    friend bool operator==(const Frame&, const Frame&) = default;

    std::string name;
    CanIdentifier identifier;
    Milliseconds cycle{0};  ///< 0: comes when it likes
    std::optional<Multiplexor> multiplexor;
    std::vector<ItemDescription> items;
  };

  std::int32_t bitrate = 500000;
  std::vector<Diagnostic> diagnostics;
  std::vector<Frame> frames;
  /// What was left out of the file, and why, a sentence each.
  std::vector<std::string> notes;

  /// What the file says about a function's diagnosis; nothing when it does not know the function.
  TransportDescription TransportOf(const std::string& function) const;
};

}  // namespace korval::ecu
