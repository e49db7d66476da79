// SPDX-License-Identifier: MIT
// The way into this library: a session as diag/viator3.h describes it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "diag/viator3.h"

namespace korval::ecu {

/// What a session needs from the program around it.
struct SessionEnvironment {
  /// Time and waiting; shared with everything of the session that outlives it.
  std::shared_ptr<base::EventLoop> loop;
  /// The configured port; the link opens when it is written back.
  std::string port;
  /// Where ECU files are looked for when none that was offered has the function; "" for nowhere.
  std::string ecu_folder;
  /// Sees each CAN frame that goes to the simulated bus: identifier, and 0 to 8 bytes. May be empty.
  std::function<void(std::int32_t identifier, base::ByteView data)> on_can_frame;
};

/// A session with no link open yet. Destroying it closes it.
std::shared_ptr<viator3::Session> CreateSession(const SessionEnvironment& environment);

}  // namespace korval::ecu
