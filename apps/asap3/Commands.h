// SPDX-License-Identifier: MIT
#pragma once

#include "apps/asap3/ClientOptions.h"
#include "client/Asap3Client.h"

namespace korval::apps {

/// Carries out the command: opens the session it needs, prints its results to standard output, and ends the
/// session, also after a failure (on a serial line nothing else would end it). Raises what the client raises.
void RunCommand(client::Asap3Client& client, const ClientOptions& options);

}  // namespace korval::apps
