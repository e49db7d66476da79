// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "base/ByteBuffer.h"
#include "ecu/description/ItemDescription.h"

namespace korval::ecu {

/// One request of an ECU function. The items of its answer are read when they are first asked for: a file
/// may hold tens of thousands and be selected for a few of them.
class RequestDescription {
 public:
  using Items = std::vector<ItemDescription>;

  /// A Request element; its document outlives the object. None when the element has no name.
  static std::optional<RequestDescription> Read(const pugi::xml_node& node);

  const Items& Received() const;

  std::string name;
  /// At most 4095 bytes and as long as its items need; empty when the file gives no bytes to send.
  base::ByteBuffer sent;
  bool no_answer = false;     ///< the ECU does not answer it
  std::size_t min_bytes = 1;  ///< of the answer, 1 to 4095
  Items sent_items;

 private:
  RequestDescription() = default;

  pugi::xml_node received_node_;
  mutable std::optional<Items> received_;
};

}  // namespace korval::ecu
