// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ecu/description/KLineDescription.h"
#include "ecu/description/Milliseconds.h"
#include "ecu/description/Timing.h"
#include "ecu/description/TransportDescription.h"

namespace korval::ecu {

/// What is said about talking to a function over links of one kind.
using LinkOptions = std::variant<KLineDescription, TransportDescription>;

/// How one ECU function is talked to. The port decides over which kind of link, so a description may have
/// options for several.
struct FunctionDescription {
  /// The options for the K-line and for diagnostics on CAN; their defaults when nothing is said. Valid as
  /// long as the description is unchanged.
  const KLineDescription& KLine() const { return On<KLineDescription>(); }
  const TransportDescription& Can() const { return On<TransportDescription>(); }

  std::string name;
  std::string ecu;                   ///< the name shown to people
  std::string protocol = "KWP2000";  ///< KWP2000, DiagOnCAN, CAN, or another that is only shown
  std::uint8_t address = 0x10;
  std::uint8_t tester = 0xF1;
  std::optional<std::uint8_t> session;  ///< diagnostic mode opened after the start
  Milliseconds keep_alive{2000};        ///< tester present after this much silence, 0: never
  std::optional<std::int32_t> repeats;  ///< of a reading request; none: as the link has it
  Timing timing;
  std::vector<LinkOptions> links;  ///< at most one of each kind

 private:
  template <typename Options>
  const Options& On() const {
    static const Options defaults;
    for (const LinkOptions& link : links) {
      if (const Options* options = std::get_if<Options>(&link)) return *options;
    }
    return defaults;
  }
};

}  // namespace korval::ecu
