// SPDX-License-Identifier: MIT
#pragma once

#include "ecu/service/Dialect.h"

namespace korval::ecu {

/// The services of ISO 14230-3. Lives as long as the program.
const Dialect& Kwp2000();

}  // namespace korval::ecu
