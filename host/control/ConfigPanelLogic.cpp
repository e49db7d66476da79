// SPDX-License-Identifier: MIT
#include "host/control/ConfigPanelLogic.h"

#include <optional>
#include <string_view>
#include <utility>

#include "base/Failure.h"
#include "base/NumberText.h"
#include "base/SerialSettings.h"
#include "host/settings/ServerSettings.h"

namespace korval::host {
namespace {

constexpr std::string_view kParityLetters = "eonms";

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::optional<std::int32_t> TcpPortOf(const std::string& text) {
  const auto number = base::ReadInteger(text);
  return number && *number >= 1 && *number <= 65535 ? number : std::nullopt;
}

ServerSettings ToSettings(const PanelValues& values) {
  ServerSettings settings;
  settings.serial_settings = values.setting;
  settings.comm_port = values.comm_port;
  settings.handshaking = std::to_string(values.handshaking);
  settings.asap_folder = values.asap_folder;
  settings.korv_folder = values.korv_folder;
  settings.open_serial_at_start = values.com_auto_open;
  settings.tcp_port = static_cast<std::uint16_t>(values.tcp_ip_port);
  settings.listen = values.listen;
  settings.allow = values.allow;
  return settings;
}

}  // namespace

ConfigPanelLogic::ConfigPanelLogic(PanelFields& fields, SettingsStore& store, MessageBox& message_box,
                                   CheckAccess check_access, OnValueChanged on_value_changed)
    : fields_(fields),
      store_(store),
      message_box_(message_box),
      check_access_(std::move(check_access)),
      on_value_changed_(std::move(on_value_changed)) {
  const ServerSettings stored = ReadServerSettings(store_, "");
  values_.listen = stored.listen;
  values_.allow = stored.allow;
  ShowAccess();
}

void ConfigPanelLogic::SetValue(const PanelValues& values) {
  values_ = values;
  fields_.ShowAsapFolder(values.asap_folder);
  fields_.ShowKorvFolder(values.korv_folder);
  fields_.ShowTcpPort(std::to_string(values.tcp_ip_port));
  ShowAccess();
  ShowSetting(values.setting);
  fields_.SelectPort(values.comm_port - 1);
  fields_.SelectFlow(values.handshaking);
  fields_.ShowOpenAtStart(values.com_auto_open);
}

void ConfigPanelLogic::ShowAccess() {
  fields_.ShowListen(values_.listen);
  fields_.ShowAllow(values_.allow);
}

void ConfigPanelLogic::ShowSetting(const std::string& setting) {
  const std::size_t extra = setting.find('.') == std::string::npos ? 0 : 2;
  if (setting.size() < 6 + extra) return;
  const std::size_t end = setting.size() - extra;
  fields_.ShowSpeed(setting.substr(0, end - 6));
  const std::size_t parity = kParityLetters.find(setting[end - 5]);
  if (parity != std::string_view::npos) fields_.SelectParity(static_cast<int>(parity));
  fields_.ShowDataBits(setting.substr(end - 3, 1));
  fields_.ShowStopBits(setting.substr(end - 1));
}

void ConfigPanelLogic::Ok() {
  try {
    PanelValues taken = TakeFields();
    base::ReadSerialSettings(taken.setting);
    check_access_(taken.listen, taken.allow);
    values_ = std::move(taken);
  } catch (const base::Failure& failure) {
    message_box_.Show(failure.Description(), MessageStyle::kExclamation);
    return;
  }
  std::optional<base::Failure> failed_saving;
  try {
    SaveServerSettings(store_, ToSettings(values_));
  } catch (const base::Failure& failure) {
    failed_saving = failure;
  }
  on_value_changed_(false);
  if (failed_saving) message_box_.Show(failed_saving->Description(), MessageStyle::kExclamation);
}

void ConfigPanelLogic::Cancel() { on_value_changed_(true); }

PanelValues ConfigPanelLogic::TakeFields() const {
  PanelValues taken = Values();
  taken.comm_port = fields_.SelectedPort() + 1;
  taken.com_auto_open = fields_.OpenAtStart();
  taken.tcp_ip_port = TcpPortOf(fields_.TcpPort()).value_or(values_.tcp_ip_port);
  taken.listen = Trimmed(fields_.Listen());
  taken.allow = Trimmed(fields_.Allow());
  taken.setting = ComposeSetting();
  taken.handshaking = fields_.SelectedFlow();
  return taken;
}

std::string ConfigPanelLogic::ComposeSetting() const {
  return Trimmed(fields_.Speed()) + "," + fields_.Parity().substr(0, 1) + "," + Trimmed(fields_.DataBits()) +
         "," + Trimmed(fields_.StopBits());
}

PanelValues ConfigPanelLogic::Values() const {
  PanelValues values = values_;
  values.asap_folder = fields_.AsapDirPath();
  values.korv_folder = fields_.KorvDirPath();
  return values;
}

void ConfigPanelLogic::SetValues(const PanelValues& values) {
  values_ = values;
  fields_.ShowAsapFolder(values.asap_folder);
  fields_.ShowKorvFolder(values.korv_folder);
}

}  // namespace korval::host
