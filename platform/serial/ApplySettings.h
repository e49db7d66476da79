// SPDX-License-Identifier: MIT
#pragma once

#include "base/SerialSettings.h"

class QSerialPort;

namespace korval::platform {

/// Sets an open port's speed, parity, data bits and stop bits. Raises Failure with the reason where the
/// hardware or its driver does not know them.
void ApplySettings(const base::SerialSettings& settings, QSerialPort& port);

}  // namespace korval::platform
