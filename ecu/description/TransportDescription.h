// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "ecu/can/CanFrame.h"

namespace korval::ecu {

/// What is said about diagnostics on CAN (ISO 15765-2), for a function or for its identifiers on a bus. What
/// is not said is left open.
struct TransportDescription {
  using Number = std::optional<std::int32_t>;

  static constexpr std::int32_t kNoPadding = -1;

  /// These, and those of `other` where these are left open.
  TransportDescription CompletedBy(const TransportDescription& other) const;
  /// The number, or its default; 0 where it has none.
  std::int32_t Value(Number TransportDescription::*number) const;

  std::optional<CanIdentifier> request_id;
  std::optional<CanIdentifier> response_id;
  /// A byte in front of each frame says whom it is for.
  std::optional<bool> extended_addressing;
  /// What stands as `Addressing` and is not understood; "" when there is nothing of the kind. Nobody can be
  /// addressed then.
  std::string unknown_addressing;
  /// The value that fills up short frames; kNoPadding: they stay short.
  Number padding;
  Number n_as_ms;
  Number n_ar_ms;
  Number n_bs_ms;
  Number n_br_ms;
  Number n_cr_ms;
  Number n_cs_us;
  Number most_waits;
  Number block_size;
  Number st_min_ms;
  Number st_min_us;
  Number longest_message;
};

/// A parameter of the transport protocol as files give it, a decimal integer.
struct TransportParameter {
  const char* attribute;
  const char* symbol;
  const char* unit;
  TransportDescription::Number fallback;  ///< none: see the page on ECU files
  std::int32_t lowest;
  std::int32_t highest;
  TransportDescription::Number TransportDescription::*value;
};

/// The table that reading, defaults and docs/ecu-file.md stand on.
inline constexpr std::array<TransportParameter, 11> kTransportParameters{{
    {"NAsMs", "N_As", "ms", 1000, 1, 60000, &TransportDescription::n_as_ms},
    {"NArMs", "N_Ar", "ms", 1000, 1, 60000, &TransportDescription::n_ar_ms},
    {"NBsMs", "N_Bs", "ms", 1000, 1, 60000, &TransportDescription::n_bs_ms},
    {"NBrMs", "N_Br", "ms", 0, 0, 900, &TransportDescription::n_br_ms},
    {"NCrMs", "N_Cr", "ms", 1000, 1, 60000, &TransportDescription::n_cr_ms},
    {"NCsUs", "N_Cs", "us", std::nullopt, 0, 900000, &TransportDescription::n_cs_us},
    {"MostWaits", "N_WFTmax", "", 10, 0, 255, &TransportDescription::most_waits},
    {"BlockSize", "BS", "", 0, 0, 255, &TransportDescription::block_size},
    {"StMinMs", "STmin", "ms", 0, 0, 127, &TransportDescription::st_min_ms},
    {"StMinUs", "STmin", "us", std::nullopt, 100, 900, &TransportDescription::st_min_us},
    {"LongestMessage", "FF_DL", "bytes", 4095, 4095, 1048576, &TransportDescription::longest_message},
}};

}  // namespace korval::ecu
