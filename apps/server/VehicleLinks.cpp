// SPDX-License-Identifier: MIT
#include "VehicleLinks.h"

#include <utility>

#include "ecu/buslog/TracedCanBus.h"
#include "ecu/buslog/TracedKLineWire.h"
#include "host/settings/HostSettings.h"
#include "platform/PluggedInterface.h"
#include "platform/QtCanBus.h"
#include "platform/RealTimeKLineWire.h"
#include "platform/SerialKLineWire.h"

namespace korval::apps {
namespace {

using Log = std::shared_ptr<ecu::BusLog>;
using Trace = std::function<void(const std::string&)>;

std::unique_ptr<ecu::CanBus> OpenCanBus(const Log& log, const std::string& plugin,
                                        const std::string& interface, std::int32_t bitrate) {
  auto bus = std::make_unique<platform::QtCanBus>(plugin, interface, bitrate);
  if (!log) return bus;
  return std::make_unique<ecu::TracedCanBus>(std::move(bus), log, interface);
}

std::unique_ptr<ecu::KLineWire> OpenKLineWire(const Log& log,
                                              const std::shared_ptr<platform::RealTime>& real_time,
                                              const Trace& trace, const std::string& device) {
  std::unique_ptr<ecu::KLineWire> wire = std::make_unique<platform::SerialKLineWire>(device, trace);
  if (real_time) wire = std::make_unique<platform::RealTimeKLineWire>(std::move(wire), real_time);
  if (log) wire = std::make_unique<ecu::TracedKLineWire>(std::move(wire), log, device);
  return wire;
}

std::string PortOfChosenInterface(host::SettingsStore& settings, const std::string& client_line) {
  const std::string chosen = host::HostSettings(settings).RegGetValue("Hardware", "InstanceName", "");
  const auto free = platform::WithoutDevice(platform::ScanInterfaces(), client_line);
  for (const platform::PluggedInterface& plugged : free) {
    if (!chosen.empty() && plugged.serial_number == chosen) return plugged.port;
  }
  return "";
}

Log OpenLog(const std::optional<std::string>& path, const Trace& trace) {
  if (!path) return nullptr;
  ecu::BusLog::Settings settings;
  settings.path = *path;
  settings.on_trouble = trace;
  return std::make_shared<ecu::BusLog>(std::move(settings));
}

}  // namespace

VehicleLinks::VehicleLinks(std::shared_ptr<host::SettingsStore> settings, ClientLine client_line,
                           const ServerOptions& options, Trace trace)
    : settings_(std::move(settings)),
      client_line_(std::move(client_line)),
      trace_(std::move(trace)),
      log_(OpenLog(options.bus_trace, trace_)),
      real_time_(options.real_time ? std::make_shared<platform::RealTime>(trace_) : nullptr) {}

void VehicleLinks::AddTo(ecu::SessionEnvironment& environment) const {
  environment.open_can_bus = [log = log_](const std::string& plugin, const std::string& interface,
                                          std::int32_t bitrate) {
    return OpenCanBus(log, plugin, interface, bitrate);
  };
  environment.open_kline_wire = [log = log_, real_time = real_time_,
                                 trace = trace_](const std::string& device) {
    return OpenKLineWire(log, real_time, trace, device);
  };
  environment.kline_ports = kline_ports_;
  environment.on_note = trace_;
  environment.find_usb_port = [settings = settings_, line = client_line_] {
    return PortOfChosenInterface(*settings, line());
  };
}

}  // namespace korval::apps
