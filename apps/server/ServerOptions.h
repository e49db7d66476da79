// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/commandline/UsageError.h"

namespace korval::apps {

/// The server's command line. What is not given leaves the stored setting in force.
struct ServerOptions {
  bool headless = false;
  bool help = false;
  bool version = false;
  bool debug = false;
  bool open_serial = false;
  bool dry_run_power = false;
  bool real_time = false;
  std::optional<std::string> listen;
  /// As the settings have them, with commas between them.
  std::optional<std::string> allow;
  std::optional<std::uint16_t> tcp_port;
  std::optional<std::int32_t> serial_port;
  std::optional<std::string> serial_device;
  std::optional<std::string> serial_settings;
  std::optional<std::int32_t> handshaking;
  std::optional<std::string> asap_folder;
  std::optional<std::string> korv_folder;
  std::optional<std::string> diag_port;
  std::optional<std::string> bus_trace;
  std::optional<std::string> settings_file;
  std::optional<std::string> install_record_file;
};

/// Reads the arguments behind the program's name. Raises UsageError.
ServerOptions ReadServerOptions(const std::vector<std::string>& arguments);
/// The text of --help.
std::string ServerHelp();

}  // namespace korval::apps
