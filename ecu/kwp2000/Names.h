// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korval::ecu {

/// The name of a diagnostic service as in ISO 14230-3, "service" for a manufacturer's own.
std::string ServiceName(std::uint8_t service);

/// The name of a response code of a negative answer as in ISO 14230-3.
std::string ResponseCodeName(std::uint8_t code);

/// What a negative answer says, as in "readDataByLocalIdentifier (21): requestOutOfRange (31)".
std::string NegativeAnswerText(std::uint8_t service, std::uint8_t code);

}  // namespace korval::ecu
