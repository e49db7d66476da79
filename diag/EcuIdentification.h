// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "diag/viator3.h"

namespace korval::diag {

/// Reads an ECU's identification (ISO 14230-3 readDataByLocalIdentifier, identifier 80) and returns the
/// answer in hexadecimal, or a text that says why there is none. Raises nothing. Initialises the ECU when
/// need be and waits for it with the events running: the caller holds both arguments.
std::string ReadEcuIdentification(viator3::Session& session, viator3::Ecu& ecu);

}  // namespace korval::diag
