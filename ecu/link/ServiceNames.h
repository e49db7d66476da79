// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korval::ecu {

/// What a diagnostic protocol calls its services and refusals, for the sentences of failures.
class ServiceNames {
 public:
  virtual ~ServiceNames() = default;
  /// As in "readDataByLocalIdentifier"; "service" for one that has no name.
  virtual std::string NameOf(std::uint8_t service) const = 0;
  /// What a negative answer says, as in "readDataByLocalIdentifier (21): requestOutOfRange (31)".
  virtual std::string RefusalText(std::uint8_t service, std::uint8_t code) const = 0;
};

}  // namespace korval::ecu
