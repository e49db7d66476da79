// SPDX-License-Identifier: MIT
#include "ecu/session/OpenInterface.h"

#include <string_view>
#include <utility>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/session/CanInterface.h"
#include "ecu/session/KLineInterface.h"
#include "ecu/session/SimulatedInterface.h"

namespace korval::ecu {
namespace {

constexpr std::string_view kCanPrefix = "CAN:";
constexpr std::string_view kUsbPort = "NONE";

bool IsSerial(const std::string& port) { return port.starts_with("COM") || port.starts_with("/"); }

std::unique_ptr<DiagnosticInterface> OpenKLine(const std::string& port, const SessionEnvironment& environment,
                                               const std::shared_ptr<const ErrorTable>& errors) {
  if (!environment.open_kline_wire) {
    throw errors->MakeFailure(
        kInterfaceRefused,
        port + ": this program has no K-line support; choose the port SIM, the simulated ECU");
  }
  const auto open = [&] { return environment.open_kline_wire(port); };
  try {
    auto line = environment.kline_ports->Open(environment.loop, port, open);
    return std::make_unique<KLineInterface>(environment.loop, port, environment.kline_ports, std::move(line),
                                            errors, environment.on_note);
  } catch (const base::Failure& failure) {
    throw errors->MakeFailure(kInterfaceRefused, port + ": " + failure.Description());
  }
}

std::string UsbPort(const SessionEnvironment& environment, const ErrorTable& errors) {
  std::string port = environment.find_usb_port ? environment.find_usb_port() : std::string();
  if (!port.empty() && port != kUsbPort) return port;
  throw errors.MakeFailure(
      kInterfaceRefused,
      "NONE: the chosen USB interface is not plugged in; plug it in, or choose the port SIM, the "
      "simulated ECU");
}

struct CanPort {
  std::string plugin;
  std::string interface;
};

// CAN:PLUGIN:INTERFACE
CanPort ReadCanPort(const std::string& port, const ErrorTable& errors) {
  const std::size_t plugin_end = port.find(':', kCanPrefix.size());
  if (plugin_end == std::string::npos || plugin_end + 1 == port.size()) {
    throw errors.MakeFailure(
        kInterfaceRefused,
        port + " names no bus; write CAN:PLUGIN:INTERFACE, for example CAN:socketcan:can0");
  }
  return {port.substr(kCanPrefix.size(), plugin_end - kCanPrefix.size()), port.substr(plugin_end + 1)};
}

std::unique_ptr<DiagnosticInterface> OpenCan(const std::string& port, const SessionEnvironment& environment,
                                             const std::shared_ptr<const ErrorTable>& errors,
                                             std::shared_ptr<const MessagingFile> messaging) {
  if (!environment.open_can_bus) {
    throw errors->MakeFailure(
        kInterfaceRefused, port + ": this program drives no CAN bus; choose the port SIM, the simulated ECU");
  }
  const auto open = [open_bus = environment.open_can_bus, errors, port,
                     names = ReadCanPort(port, *errors)](std::int32_t bitrate) {
    try {
      return open_bus(names.plugin, names.interface, bitrate);
    } catch (const base::Failure& failure) {
      throw errors->MakeFailure(kInterfaceRefused, port + ": " + failure.Description());
    }
  };
  return std::make_unique<CanInterface>(environment.loop, open, errors, std::move(messaging));
}

}  // namespace

std::unique_ptr<DiagnosticInterface> OpenInterface(const std::string& port,
                                                   const SessionEnvironment& environment,
                                                   const std::shared_ptr<const ErrorTable>& errors,
                                                   std::shared_ptr<const MessagingFile> messaging) {
  if (port.empty())
    throw errors->MakeFailure(kNoInterface, "choose a port, for example SIM, the simulated ECU");
  if (port == "SIM") return std::make_unique<SimulatedInterface>(environment.loop, environment.on_can_frame);
  if (port.starts_with(kCanPrefix)) return OpenCan(port, environment, errors, std::move(messaging));
  if (port == kUsbPort)
    return OpenInterface(UsbPort(environment, *errors), environment, errors, std::move(messaging));
  if (IsSerial(port)) return OpenKLine(port, environment, errors);
  throw errors->MakeFailure(kInterfaceRefused,
                            port + ": there is no such port; choose the port SIM, the simulated ECU");
}

}  // namespace korval::ecu
