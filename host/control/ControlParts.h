// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/EventLoop.h"
#include "diag/DiagnosisObject.h"
#include "diag/PortLabel.h"
#include "diag/PortScout.h"
#include "host/control/SettingsPanel.h"
#include "host/power/PowerPlatform.h"
#include "host/settings/SettingsStore.h"
#include "host/trace/ListView.h"
#include "host/trace/MessageBox.h"
#include "host/trace/StatusView.h"
#include "host/trace/Terminal.h"
#include "protocol/SerialPort.h"
#include "protocol/TcpSocket.h"

namespace korval::host {

/// The outside of the control: everything it shows things on and talks through. Shared with whoever made
/// it, because the control outlives its window when that is closed inside a wait.
struct ControlParts {
  std::shared_ptr<base::EventLoop> loop;
  std::shared_ptr<Terminal> terminal;
  std::shared_ptr<StatusView> status;
  std::shared_ptr<ListView> files;  // LVfile
  std::shared_ptr<ListView> data;   // LVdata
  /// Null where there is no panel to edit the settings on.
  std::shared_ptr<SettingsPanel> panel;
  /// Null, both, where the diagnostic interface is not chosen from what is plugged in.
  std::shared_ptr<diag::PortLabel> port_label;
  std::shared_ptr<diag::PortScout> port_scout;
  std::shared_ptr<MessageBox> message_box;
  std::shared_ptr<SettingsStore> settings;
  std::shared_ptr<PowerPlatform> power;
  std::shared_ptr<protocol::TcpSocket> tcp_server;
  std::shared_ptr<protocol::SerialPort> serial_port;
  diag::DiagnosisObject::SessionFactory create_session;
  /// Whether something of a closed session has still to go out, which a program that ends waits for. May be
  /// empty.
  std::function<bool()> is_taking_leave;
  /// Absolute. Stands in for the folders that no setting names.
  std::string application_folder;
  /// Takes the place of the stored TCP port for this run; 0 takes any free one.
  std::optional<std::uint16_t> tcp_port;
  /// Take the place of the stored folders for this run.
  std::optional<std::string> asap_folder;
  std::optional<std::string> korv_folder;
};

}  // namespace korval::host
