// SPDX-License-Identifier: MIT
#pragma once

#include "host/control/ControlParts.h"

namespace korval::ui {

/// Completes the views with this machine's ports, power service and usual settings store, and with a
/// session factory that says that the host has to hand over a session.
host::ControlParts CompleteWithUsualParts(host::ControlParts views);

}  // namespace korval::ui
