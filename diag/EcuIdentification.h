// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "base/Task.h"
#include "diag/viator3.h"

namespace korval::diag {

/// Reads an ECU's identification and returns the answer in hexadecimal, or a text that says why there is
/// none. Raises nothing. Initialises the ECU when need be.
base::Task<std::string> ReadEcuIdentification(std::shared_ptr<viator3::Session> session,
                                              std::shared_ptr<viator3::Ecu> ecu);

}  // namespace korval::diag
