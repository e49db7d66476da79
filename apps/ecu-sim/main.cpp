// SPDX-License-Identifier: MIT
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QCoreApplication>

#include "apps/ecu-sim/CanStation.h"
#include "apps/ecu-sim/KLineStation.h"
#include "apps/ecu-sim/SimulatorOptions.h"
#include "base/XmlFile.h"
#include "ecu/buslog/BusLog.h"
#include "ecu/buslog/TracedCanBus.h"
#include "ecu/ecufile/EcuFile.h"
#include "ecu/ecufile/MessagingReader.h"
#include "platform/QtCanBus.h"
#include "platform/QtEventLoop.h"
#include "platform/process/EventBarrier.h"
#include "platform/process/StopSignals.h"

namespace {

using korval::apps::SimulatorOptions;
namespace ecu = korval::ecu;

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

using Ecu = std::shared_ptr<const ecu::EcuDescription>;
using Loop = std::shared_ptr<korval::base::EventLoop>;

std::shared_ptr<ecu::BusLog> OpenLog(const SimulatorOptions& options) {
  if (!options.bus_trace) return nullptr;
  ecu::BusLog::Settings settings;
  settings.path = *options.bus_trace;
  settings.on_trouble = [](const std::string& text) { std::cerr << "korval-ecu-sim: " << text << std::endl; };
  return std::make_shared<ecu::BusLog>(std::move(settings));
}

int Serve(const std::string& where) {
  const korval::platform::StopSignals stop([] { QCoreApplication::quit(); });
  std::cout << where << std::endl;
  return QCoreApplication::exec();
}

int ServeKLine(const SimulatorOptions& options, const Loop& loop, const Ecu& description) {
  const korval::apps::KLineStation station(loop, description, options.kline_path, options.echo,
                                           OpenLog(options));
  return Serve(description->Function().ecu + " answers on the K-line " + options.kline_path);
}

int ServeCan(const SimulatorOptions& options, const Loop& loop, const Ecu& description) {
  ecu::MessagingFile messaging;
  if (options.messaging_file) messaging = ecu::LoadMessagingFile(*options.messaging_file);
  const auto open = [can = *options.can, bitrate = messaging.bitrate,
                     log = OpenLog(options)]() -> std::unique_ptr<ecu::CanBus> {
    auto bus = std::make_unique<korval::platform::QtCanBus>(can.plugin, can.interface, bitrate);
    if (!log) return bus;
    return std::make_unique<ecu::TracedCanBus>(std::move(bus), log, can.interface);
  };
  const korval::apps::CanStation station(loop, description, std::move(messaging), open);
  return Serve(description->Function().ecu + " answers on CAN interface " + options.can->interface);
}

int Run(const SimulatorOptions& options) {
  if (options.help || options.version) {
    std::cout << (options.help ? korval::apps::SimulatorHelp() : "korval-ecu-sim " KORVAL_VERSION "\n");
    return 0;
  }
  const Ecu description = ecu::ReadEcuFile(korval::base::LoadXmlFile(options.ecu_file));
  const Loop loop = std::make_shared<korval::platform::QtEventLoop>();
  return options.can ? ServeCan(options, loop, description) : ServeKLine(options, loop, description);
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  const korval::platform::GuardedApplication<QCoreApplication> application(argc, argv);
  QCoreApplication::setApplicationName("korval-ecu-sim");
  try {
    return Run(korval::apps::ReadSimulatorOptions(std::vector<std::string>(argv + 1, argv + argc)));
  } catch (const korval::apps::UsageError& error) {
    std::cerr << "korval-ecu-sim: " << error.what() << " (see --help)\n";
    return kWrongUsage;
  } catch (const std::exception& failure) {
    std::cerr << "korval-ecu-sim: " << failure.what() << "\n";
    return kFailed;
  }
}
