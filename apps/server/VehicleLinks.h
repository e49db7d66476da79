// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ServerOptions.h"
#include "ecu/buslog/BusLog.h"
#include "ecu/session/SessionFactory.h"
#include "host/settings/SettingsStore.h"
#include "platform/RealTime.h"

namespace korval::apps {

/// The adapters on vehicles' wires, as sessions of this computer open them.
class VehicleLinks {
 public:
  using ClientLine = std::function<std::string()>;

  /// The chosen USB interface is read from `settings`; it is never the device of the client's RS232 line.
  /// What goes over the wires is recorded in the file that the options name, if any; `trace` is told what the
  /// person at the console has to know. Raises Failure when that file cannot be written.
  VehicleLinks(std::shared_ptr<host::SettingsStore> settings, ClientLine client_line,
               const ServerOptions& options, std::function<void(const std::string&)> trace);

  void AddTo(ecu::SessionEnvironment& environment) const;
  /// As ControlParts::is_taking_leave.
  bool IsTakingLeave() const { return kline_ports_->IsTakingLeave(); }

 private:
  std::shared_ptr<host::SettingsStore> settings_;
  ClientLine client_line_;
  std::function<void(const std::string&)> trace_;
  std::shared_ptr<ecu::BusLog> log_;               // null: nothing is recorded
  std::shared_ptr<platform::RealTime> real_time_;  // null: it is not wanted
  std::shared_ptr<ecu::KLinePorts> kline_ports_ = std::make_shared<ecu::KLinePorts>();
};

}  // namespace korval::apps
