// SPDX-License-Identifier: MIT
#pragma once

#include "base/ByteBuffer.h"
#include "base/Task.h"

namespace korval::protocol {

/// What the session commands and the receive paths ask of the floors above. Each of these may be called
/// while another command waits.
class SessionServices {
 public:
  virtual ~SessionServices() = default;
  /// Makes a diagnosis object available. False after a failure, whose number and description then stand
  /// in the reply.
  virtual base::Task<bool> CreateDiagnosisObject(base::ByteBuffer& reply) = 0;
  /// Empties the list of acquired data.
  virtual void ClearAcquiredDataView() = 0;
  /// Ends the client's session: empties both lists and both collections, drops the acquisition lists and
  /// releases the diagnosis object.
  virtual void EndSession() = 0;
  /// Does so before a power request is acted on, when there is a diagnosis object; false when there is
  /// none. A session of the host application is closed only when `close_host_session` is set.
  virtual bool ReleaseForPowerRequest(bool close_host_session) = 0;
};

}  // namespace korval::protocol
