// SPDX-License-Identifier: MIT
#include "ControlAssembly.h"

#include <utility>

#include <QCoreApplication>

#include "SystemPower.h"
#include "VehicleLinks.h"
#include "ecu/session/SessionFactory.h"
#include "host/settings/HostSettings.h"
#include "host/settings/ServerSettings.h"
#include "host/trace/TraceConsole.h"
#include "platform/DevicePortScout.h"
#include "platform/DryRunPower.h"
#include "platform/QSettingsStore.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"
#include "platform/QtTcpSocket.h"
#include "platform/process/EventBarrier.h"

namespace korval::apps {
namespace {

constexpr char kCommPort[] = "QOR/General/CommPort";

// Traces from outside the control, which does not exist yet when its parts are made.
std::function<void(const std::string&)> TraceTo(const std::shared_ptr<host::Terminal>& terminal) {
  return [terminal](const std::string& text) { host::TraceConsole(*terminal).Line(text); };
}

host::OverrideSettings::Overrides OverridesOf(const ServerOptions& options) {
  host::OverrideSettings::Overrides overrides;
  const auto set = [&](const std::string& path, const std::optional<std::string>& value) {
    if (value) overrides[path] = *value;
  };
  set(kCommPort, options.diag_port);
  set(host::PropertyPath("Settings"), options.serial_settings);
  set(host::PropertyPath("AsapFolder"), options.asap_folder);
  set(host::PropertyPath("KorvFolder"), options.korv_folder);
  if (options.serial_port) set(host::PropertyPath("CommPort"), std::to_string(*options.serial_port));
  if (options.handshaking) set(host::PropertyPath("Handshaking"), std::to_string(*options.handshaking));
  if (options.tcp_port) set(host::PropertyPath("tcpipPort"), std::to_string(*options.tcp_port));
  set(host::PropertyPath("Listen"), options.listen);
  set(host::PropertyPath("Allow"), options.allow);
  if (options.open_serial) set(host::PropertyPath("comAutoStart"), "-1");
  return overrides;
}

std::shared_ptr<host::SettingsStore> OpenSettings(const ServerOptions& options,
                                                  const host::ControlParts& parts,
                                                  const host::OverrideSettings::Overrides& stand_ins) {
  const auto stored = std::make_shared<platform::QSettingsStore>(
      QString::fromStdString(options.settings_file.value_or("")),
      QString::fromStdString(options.install_record_file.value_or("")),
      [box = parts.message_box](const std::string& text) {
        box->Show(text, host::MessageStyle::kExclamation);
      });
  host::OverrideSettings::Overrides overrides = OverridesOf(options);
  for (const auto& stand_in : stand_ins) {
    if (!stored->Read(stand_in.first)) overrides.insert(stand_in);
  }
  return std::make_shared<host::OverrideSettings>(stored, std::move(overrides));
}

std::shared_ptr<host::PowerPlatform> OpenPower(const ServerOptions& options,
                                               const host::ControlParts& parts) {
  if (options.dry_run_power) return std::make_shared<platform::DryRunPower>(TraceTo(parts.terminal));
  return std::make_shared<SystemPower>();
}

std::shared_ptr<platform::QtSerialPort> OpenSerial(const ServerOptions& options,
                                                   const host::ControlParts& parts) {
  auto port = std::make_shared<platform::QtSerialPort>(TraceTo(parts.terminal));
  if (options.serial_device) {
    const auto settings = host::ReadServerSettings(*parts.settings, parts.application_folder);
    port->SetDevice(settings.comm_port.value_or(port->PortNumber()), *options.serial_device);
  }
  return port;
}

std::string EightDigits(std::int32_t identifier) {
  base::ByteBuffer bytes{0, 0, 0, 0};
  bytes.SetBits(0, 32, static_cast<std::uint32_t>(identifier));
  return bytes.ToHex();
}

// A session on the port that is chosen when it is created.
diag::DiagnosisObject::SessionFactory SessionFactory(const host::ControlParts& parts,
                                                     const VehicleLinks& links) {
  const auto trace = TraceTo(parts.terminal);
  return [loop = parts.loop, store = parts.settings, folder = parts.application_folder, trace, links] {
    ecu::SessionEnvironment environment;
    links.AddTo(environment);
    environment.loop = loop;
    environment.port = host::HostSettings(*store).RegGetValue("General", "CommPort", "");
    environment.ecu_folder = host::ReadServerSettings(*store, folder).korv_folder;
    environment.on_can_frame = [trace](std::int32_t identifier, base::ByteView data) {
      trace("CAN frame sent : " + EightDigits(identifier) + " " + base::HexText(data));
    };
    return ecu::CreateSession(environment);
  };
}

}  // namespace

host::ControlParts CompleteParts(const ServerOptions& options, host::ControlParts views,
                                 const host::OverrideSettings::Overrides& stand_ins) {
  host::ControlParts parts = std::move(views);
  platform::EventBarrier::SetReport([terminal = std::weak_ptr(parts.terminal)](const std::string& text) {
    if (const auto trace = terminal.lock()) host::TraceConsole(*trace).Line(text);
  });
  parts.application_folder = QCoreApplication::applicationDirPath().toStdString();
  parts.loop = std::make_shared<platform::QtEventLoop>();
  parts.settings = OpenSettings(options, parts, stand_ins);
  parts.power = OpenPower(options, parts);
  const auto serial_port = OpenSerial(options, parts);
  const auto client_line = [serial_port] { return serial_port->Device(); };
  parts.serial_port = serial_port;
  parts.tcp_server = std::make_shared<platform::QtTcpSocket>(TraceTo(parts.terminal));
  parts.tcp_port = options.tcp_port;
  parts.asap_folder = options.asap_folder;
  parts.korv_folder = options.korv_folder;
  parts.port_scout = std::make_shared<platform::DevicePortScout>(parts.loop, client_line);
  const VehicleLinks links(parts.settings, client_line, options, TraceTo(parts.terminal));
  parts.create_session = SessionFactory(parts, links);
  parts.is_taking_leave = [links] { return links.IsTakingLeave(); };
  return parts;
}

void ChooseDiagnosticPort(const host::ControlParts& parts) {
  if (parts.settings->Read(kCommPort)) return;
  if (!parts.settings->IsReadable()) {
    TraceTo(parts.terminal)(
        "Which diagnostic interface was chosen cannot be read, and none is taken: mend the settings file or "
        "remove it, or name the interface (--diag-port)");
    return;
  }
  host::HostSettings(*parts.settings).RegSetValue("General", "CommPort", "SIM");
  TraceTo(parts.terminal)(
      "No diagnostic interface chosen yet: the simulated ECU answers (General/CommPort=SIM)");
}

}  // namespace korval::apps
