// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "diag/DiagnosisObject.h"
#include "model/KorvAsapFile.h"

namespace korval::parameters {

/// The ECU object that serves a file's function. Raises Failure 1000 without a session, 2020 without an ECU
/// file for the function.
inline std::shared_ptr<viator3::Ecu> EcuFunction(const diag::DiagnosisObject& diagnosis,
                                                 const model::KorvAsapFile& file) {
  return diagnosis.RequireSession()->EcuByFunction(file.KorvFunction());
}

}  // namespace korval::parameters
