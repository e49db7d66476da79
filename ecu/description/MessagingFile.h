// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "ecu/can/CanFrame.h"
#include "ecu/description/ItemDescription.h"
#include "ecu/description/Timing.h"
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

  /// The messages of a DBC file, which says nothing of diagnostics and of the bit rate.
  static MessagingFile FromDbc(std::string_view content);
  /// An element xml/messaging. Raises Failure for a data item that lies outside its frame.
  static MessagingFile FromXml(const pugi::xml_node& messaging);

  std::int32_t bitrate = 500000;
  std::vector<Diagnostic> diagnostics;
  std::vector<Frame> frames;
  /// What was left out of a DBC file, and why, a sentence each.
  std::vector<std::string> notes;

  /// What the file says about a function's diagnosis; nothing when it does not know the function.
  TransportDescription TransportOf(const std::string& function) const;
};

/// Reads an XML messaging file, or a DBC file by its ending, by its full path. Raises Failure when it cannot
/// be read or is none.
MessagingFile LoadMessagingFile(const std::string& path);

}  // namespace korval::ecu
