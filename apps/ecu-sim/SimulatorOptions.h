// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/commandline/UsageError.h"

namespace korval::apps {

/// The simulator's command line: one ECU file, and one wire.
struct SimulatorOptions {
  struct Can {
    std::string plugin;
    std::string interface;
  };

  bool help = false;
  bool version = false;
  bool echo = false;
  std::string ecu_file;
  std::string kline_path;  // empty: CAN
  std::optional<Can> can;
  std::optional<std::string> messaging_file;
  std::optional<std::string> bus_trace;
};

/// Reads the arguments behind the program's name. Raises UsageError.
SimulatorOptions ReadSimulatorOptions(const std::vector<std::string>& arguments);
/// The text of --help.
std::string SimulatorHelp();

}  // namespace korval::apps
