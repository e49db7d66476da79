// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "base/Failure.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/service/Exchange.h"

namespace korval::ecu {

/// The failure that an exchange with the ECU of that name has ended in; none for a positive answer.
std::optional<base::Failure> FailureOf(const Exchange& exchange, const std::string& ecu,
                                       const ErrorTable& errors);

}  // namespace korval::ecu
