// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ecu/description/EcuDescription.h"

namespace korval::ecu {

/// A CAN messaging file: who uses which identifiers, and the cyclic frames of the function "CAN".
struct MessagingFile {
  struct Diagnostic {
    std::string function;
    std::uint32_t request_id = 0;
    std::uint32_t response_id = 0;
    bool extended_ids = false;
    Timing timing;
    std::uint8_t padding = 0x55;
  };
  struct Frame {
    std::uint32_t identifier = 0;
    bool extended_id = false;
    std::string name;
    Milliseconds cycle{0};
    std::vector<ItemDescription> items;
  };

  std::int32_t bitrate = 500000;
  std::vector<Diagnostic> diagnostics;
  std::vector<Frame> frames;
};

/// Reads an XML messaging file by its full path. Raises Failure when it cannot be read or is none.
MessagingFile LoadMessagingFile(const std::string& path);

}  // namespace korval::ecu
