// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "apps/asap3/ClientOptions.h"
#include "client/Asap3Client.h"

namespace korval::apps {

/// Chooses the names for acquisition and prints their values again and again, until the count is reached or
/// an interrupt or termination signal comes. Raises what the client raises, LinkError when the server answers
/// another number of values than were chosen, and Failure when the CSV file cannot be written.
void Watch(client::Asap3Client& client, std::uint16_t lun, const ClientOptions& options);

}  // namespace korval::apps
