// SPDX-License-Identifier: MIT
// The ECU file; docs/ecu-file.md is its reference. What cannot be used (an item without a name, a bit range
// that does not exist) is left out.
#pragma once

#include <memory>

#include "base/XmlFile.h"
#include "ecu/description/EcuDescription.h"

namespace korval::ecu {

/// Reads the Function element alone; the rest is read from the document when it is first asked for. Raises
/// Failure 2020 when the file names no function.
std::shared_ptr<const EcuDescription> ReadEcuFile(const base::XmlDocument& document);

}  // namespace korval::ecu
