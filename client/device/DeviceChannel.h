// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "base/SerialSettings.h"
#include "client/Channel.h"

namespace korval::client {

/// Connects to a server over TCP. Raises LinkError with what to do when nobody answers there in time.
/// Needs a QCoreApplication, as does the channel it gives.
std::unique_ptr<Channel> ConnectTcp(const std::string& host, std::uint16_t port,
                                    std::chrono::milliseconds timeout);

/// Opens a serial line by its device path (a pseudo terminal serves too) or port name. Raises LinkError when
/// it cannot be opened or does not know the settings. Needs a QCoreApplication, as above.
std::unique_ptr<Channel> OpenSerial(const std::string& device, const base::SerialSettings& settings);

}  // namespace korval::client
