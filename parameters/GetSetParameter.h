// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "base/ByteBuffer.h"
#include "base/Task.h"
#include "diag/WindowsScript.h"
#include "host/trace/TraceConsole.h"
#include "model/KorvAsapFiles.h"
#include "protocol/Dispatcher.h"

namespace korval::parameters {

/// The commands "get parameter" and "set parameter": one ECU value by its name, as a real. Each failure is
/// raised with the whole message for the client, whatever its cause with number 1.
class GetSetParameter {
 public:
  /// The arguments outlive the commands.
  GetSetParameter(host::TraceConsole& console, const model::KorvAsapFiles& files,
                  const diag::WindowsScript& script)
      : console_(console), files_(files), script_(script) {}

  void AttachTo(protocol::Dispatcher& dispatcher);
  /// Reads lun (word) and name (string); answers value, minimum, maximum (the value, all three) and
  /// increment (0) as reals.
  base::Task<std::int32_t> Get(base::ByteView parameters, base::ByteBuffer& reply);
  /// Reads lun (word), name (string) and v (real); answers nothing.
  base::Task<std::int32_t> Set(base::ByteView parameters);

 private:
  host::TraceConsole& console_;
  const model::KorvAsapFiles& files_;
  const diag::WindowsScript& script_;
};

}  // namespace korval::parameters
