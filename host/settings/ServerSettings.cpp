// SPDX-License-Identifier: MIT
#include "host/settings/ServerSettings.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "base/Failure.h"
#include "base/NumberText.h"

namespace korval::host {
namespace {

constexpr char kThisMachine[] = "127.0.0.0/8, ::1";

std::optional<std::int32_t> ReadIntegerBetween(std::int32_t lowest, std::int32_t highest,
                                               const std::string& text) {
  const auto number = base::ReadInteger(text);
  return number && *number >= lowest && *number <= highest ? number : std::nullopt;
}

bool EqualsIgnoringCase(std::string_view text, std::string_view lower_case) {
  return std::equal(text.begin(), text.end(), lower_case.begin(), lower_case.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

std::optional<std::int32_t> CommPortOf(const std::string& text) {
  if (text.empty()) return ServerSettings::kDefaultCommPort;
  using Limits = std::numeric_limits<std::int16_t>;
  return ReadIntegerBetween(Limits::min(), Limits::max(), text);
}

bool BooleanOf(const std::string& text) {
  return EqualsIgnoringCase(text, "true") || base::ReadNumber(text).value_or(0) != 0;
}

std::uint16_t TcpPortOf(const std::string& text) {
  return static_cast<std::uint16_t>(
      ReadIntegerBetween(1, 65535, text).value_or(ServerSettings::kDefaultTcpPort));
}

}  // namespace

std::string PropertyPath(const std::string& key) { return "KorvalAsapServer/Properties/" + key; }

ServerSettings ReadServerSettings(const SettingsStore& store, const std::string& application_folder) {
  const auto read = [&](const char* key, const std::string& default_text) {
    return store.Read(PropertyPath(key)).value_or(default_text);
  };
  ServerSettings settings;
  settings.serial_settings = read("Settings", "");
  settings.comm_port = CommPortOf(read("CommPort", ""));
  settings.handshaking = read("Handshaking", "");
  settings.asap_folder = read("AsapFolder", application_folder);
  settings.korv_folder = read("KorvFolder", application_folder);
  settings.echo = BooleanOf(read("Echo", ""));
  settings.tcp_port = TcpPortOf(read("tcpipPort", "1001"));
  // Every text but "0" opens the port, the word False included.
  settings.open_serial_at_start = read("comAutoStart", "0") != "0";
  settings.listen = read("Listen", "");
  settings.allow = read("Allow", store.IsReadable() ? "" : kThisMachine);
  return settings;
}

void SaveServerSettings(SettingsStore& store, const ServerSettings& settings) {
  std::optional<base::Failure> last_failure;
  const auto write = [&](const char* key, const std::string& value) {
    try {
      store.Write(PropertyPath(key), value);
    } catch (const base::Failure& failure) {
      last_failure = failure;
    }
  };
  write("Settings", settings.serial_settings);
  if (settings.comm_port) write("CommPort", std::to_string(*settings.comm_port));
  write("Handshaking", settings.handshaking);
  write("AsapFolder", settings.asap_folder);
  write("KorvFolder", settings.korv_folder);
  write("comAutoStart", settings.open_serial_at_start ? "-1" : "0");
  write("tcpipPort", std::to_string(settings.tcp_port));
  const auto write_changed = [&](const char* key, const std::string& value) {
    if (store.Read(PropertyPath(key)).value_or("") != value) write(key, value);
  };
  write_changed("Listen", settings.listen);
  write_changed("Allow", settings.allow);
  if (last_failure) throw base::Failure(*last_failure);
}

}  // namespace korval::host
