// SPDX-License-Identifier: MIT
#pragma once

#include "ServerOptions.h"
#include "host/control/ControlParts.h"
#include "host/settings/OverrideSettings.h"

namespace korval::apps {

/// Completes the views (terminal, status, lists, message box) with Qt's adapters and our own
/// diagnostic-session library, as the options say. `stand_ins` hold where a setting is neither stored nor
/// given as an option; they are never saved.
host::ControlParts CompleteParts(const ServerOptions& options, host::ControlParts views,
                                 const host::OverrideSettings::Overrides& stand_ins = {});

/// Chooses the simulated ECU, and traces so, when no diagnostic port was ever chosen; not when nobody can
/// tell, for its values must not stand in for a vehicle's. The control has traced its banner by then.
void ChooseDiagnosticPort(const host::ControlParts& parts);

}  // namespace korval::apps
