// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include <QStringList>

#include "apps/UsageError.h"

namespace korval::apps {

/// The simulator's command line: one ECU file, and one wire.
struct Options {
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

/// Reads the command line (program name first). Raises UsageError.
Options ParseOptions(const QStringList& arguments);
/// The text of --help.
std::string HelpText();

}  // namespace korval::apps
