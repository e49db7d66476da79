// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "base/ByteBuffer.h"
#include "base/Task.h"
#include "ecu/session/LinkHost.h"

namespace korval::ecu {

/// The way of one ECU object and its requests to the ECU. A channel that a closed session ended is opened
/// anew once the session's port is.
class EcuConnection {
 public:
  EcuConnection(std::shared_ptr<LinkHost> host, std::shared_ptr<const EcuDescription> ecu);

  bool IsInitialised() const { return channel_ && channel_->IsConnected(); }
  /// These raise as ServiceChannel's operations do. The connection may be destroyed in their waits.
  base::Task<void> Initialise() { return Open()->Connect(function_); }
  base::Task<void> Reinitialise() { return Open()->Reconnect(function_); }
  base::Task<void> Exchange(base::ByteView request, base::ByteBuffer& answer) {
    return Open()->Request(request, answer, function_);
  }
  base::Task<void> Tell(base::ByteView request) { return Open()->Tell(request, function_); }

 private:
  std::shared_ptr<ServiceChannel> Open();

  std::shared_ptr<LinkHost> host_;
  std::shared_ptr<const EcuDescription> ecu_;
  ServiceChannel::Asker function_;
  std::shared_ptr<ServiceChannel> channel_;
};

}  // namespace korval::ecu
