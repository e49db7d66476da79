// SPDX-License-Identifier: MIT
#pragma once

#include "diag/viator3.h"

namespace korval::fuzz {

/// Uses an ECU object as a client can: executes its requests, reads and writes their items. What it cannot
/// do it must refuse with a sentence.
void DriveEcu(viator3::Ecu& ecu);

}  // namespace korval::fuzz
