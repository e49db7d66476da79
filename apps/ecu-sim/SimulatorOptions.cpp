// SPDX-License-Identifier: MIT
#include "apps/ecu-sim/SimulatorOptions.h"

#include "apps/commandline/CommandLine.h"

namespace korval::apps {
namespace {

SimulatorOptions::Can CanOf(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos || colon == 0 || colon + 1 == text.size())
    RefuseValue("--can", "PLUGIN:INTERFACE, for example virtualcan:can0", text);
  return {text.substr(0, colon), text.substr(colon + 1)};
}

CommandLine Declare(SimulatorOptions& options) {
  CommandLine line({
      .usage = "korval-ecu-sim [OPTIONS]",
      .description =
          "The simulated ECU of an ECU file at the other end of a wire: K-line on a pseudo terminal, or a "
          "CAN bus.\n"
          "Its Simulation element says what it answers, and which faults it has. Stops on SIGINT, SIGTERM "
          "and "
          "SIGHUP.",
      .ending = "Example:\n"
                "  korval-ecu-sim --ecu examples/ecu/engine.xml --kline /tmp/kline",
  });
  line.Value("--ecu", "FILE", "The ECU file.", [&](const std::string& file) { options.ecu_file = file; });
  line.Value("--kline", "PATH", "Makes a pseudo terminal for the tester and links it at PATH.",
             [&](const std::string& path) { options.kline_path = path; });
  line.Flag("--echo", "With --kline: gives every byte back, as the one wire of a K-line does.", options.echo);
  line.Value("--can", "PLUGIN:INTERFACE",
             "Answers on a CAN bus, for example virtualcan:can0 or socketcan:can0.",
             [&](const std::string& text) { options.can = CanOf(text); });
  line.Value("--messaging", "FILE", "With --can: the CAN messaging file, for identifiers and cyclic frames.",
             [&](const std::string& file) { options.messaging_file = file; });
  line.Value("--bus-trace", "FILE", "Records the traffic: candump's log format, or K-line bytes.",
             [&](const std::string& file) { options.bus_trace = file; });
  return line;
}

void RequireOneWire(const SimulatorOptions& options) {
  if (options.ecu_file.empty()) throw UsageError("--ecu FILE is missing");
  if (options.kline_path.empty() == !options.can.has_value()) {
    throw UsageError("give either --kline PATH or --can PLUGIN:INTERFACE");
  }
  if (options.can && options.echo) throw UsageError("--echo goes with --kline");
  if (!options.can && options.messaging_file) throw UsageError("--messaging goes with --can");
}

}  // namespace

SimulatorOptions ReadSimulatorOptions(const std::vector<std::string>& arguments) {
  SimulatorOptions options;
  const CommandLine::Wanted wanted = Declare(options).Read(arguments);
  options.help = wanted == CommandLine::Wanted::kHelp;
  options.version = wanted == CommandLine::Wanted::kVersion;
  if (wanted == CommandLine::Wanted::kRun) RequireOneWire(options);
  return options;
}

std::string SimulatorHelp() {
  SimulatorOptions unused;
  return Declare(unused).Help();
}

}  // namespace korval::apps
