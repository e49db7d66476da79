// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/settings/SettingsStore.h"

namespace korval::host {

/// The server's own settings, section "Properties" of `KorvalAsapServer`, as they are read at start.
struct ServerSettings {
  static constexpr std::uint16_t kDefaultTcpPort = 1001;
  static constexpr std::int32_t kDefaultCommPort = 2;

  /// "9600,n,8,1"; "" leaves the serial port's own.
  std::string serial_settings;
  /// None, when the text is no 16-bit integer, leaves the serial port's own number.
  std::optional<std::int32_t> comm_port = kDefaultCommPort;
  /// The code as text: only the serial port can say whether it takes it. "" leaves the port's own.
  std::string handshaking;
  std::string asap_folder;
  std::string korv_folder;
  /// Kept; nothing reads it.
  bool echo = false;
  /// 1 to 65535.
  std::uint16_t tcp_port = kDefaultTcpPort;
  bool open_serial_at_start = false;
  /// IP address to listen on, "" for all, and the clients to let in, "" for everybody, as the TCP socket
  /// reads them.
  std::string listen;
  std::string allow;

  friend bool operator==(const ServerSettings&, const ServerSettings&) = default;
};

/// The store's path of one of the settings.
std::string PropertyPath(const std::string& key);

/// Reads every setting. One that is absent or cannot be converted has its default; the default of both
/// folders is `application_folder`. From a store that cannot be read, `allow` is this machine: nobody knows
/// whom it kept out.
ServerSettings ReadServerSettings(const SettingsStore& store, const std::string& application_folder);

/// Saves what the settings panel edits: everything but the echo. Each value is written, whatever became of
/// the one before; raises the last Failure there was. A `comm_port` of none is not written, nor are `listen`
/// and `allow` when they are stored so already.
void SaveServerSettings(SettingsStore& store, const ServerSettings& settings);

}  // namespace korval::host
