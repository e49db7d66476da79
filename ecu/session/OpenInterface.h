// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "ecu/description/ErrorTable.h"
#include "ecu/description/MessagingFile.h"
#include "ecu/session/DiagnosticInterface.h"
#include "ecu/session/SessionFactory.h"

namespace korval::ecu {

/// Opens the interface on `port`. Raises Failure 1001 for an empty port and 1002 for one that cannot be
/// opened; the description says what to do. `messaging` is what is known of the CAN bus so far.
std::unique_ptr<DiagnosticInterface> OpenInterface(const std::string& port,
                                                   const SessionEnvironment& environment,
                                                   const std::shared_ptr<const ErrorTable>& errors,
                                                   std::shared_ptr<const MessagingFile> messaging);

}  // namespace korval::ecu
