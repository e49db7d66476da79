// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "host/control/PanelFields.h"
#include "host/control/PanelValues.h"
#include "host/settings/SettingsStore.h"
#include "host/trace/MessageBox.h"

namespace korval::host {

/// The settings panel's logic: loads the fields, and on OK takes the values over, saves them and tells the
/// panel's owner.
class ConfigPanelLogic {
 public:
  /// Told of the end of an edit: whether it was cancelled.
  using OnValueChanged = std::function<void(bool cancelled)>;

  /// Raises Failure for a text that the TCP socket would refuse.
  using CheckAccess = std::function<void(const std::string& listen, const std::string& allow)>;

  /// The arguments outlive the logic. `on_value_changed` may let the panel go. Where to listen and whom to
  /// let in is loaded from the store: an OK without a SetValue must not open what is closed.
  ConfigPanelLogic(PanelFields& fields, SettingsStore& store, MessageBox& message_box,
                   CheckAccess check_access, OnValueChanged on_value_changed);

  /// Loads the fields. The settings string is cut by fixed positions from its end; of one that is too short
  /// nothing is shown. A parity letter other than a lower-case e, o, n, m or s leaves the list as it is.
  void SetValue(const PanelValues& values);

  /// Takes the fields over and saves them. A port text that is no number from 1 to 65535 keeps the port.
  /// Settings that no serial port and addresses that no TCP socket could take are refused with a message box.
  void Ok();
  void Cancel();

  /// The values of the last OK, or as loaded before one; the folders as the lists show them.
  PanelValues Values() const;
  /// Changes single values, which the next OK takes from the fields again.
  void SetValues(const PanelValues& values);

 private:
  void ShowAccess();
  void ShowSetting(const std::string& setting);
  PanelValues TakeFields() const;
  std::string ComposeSetting() const;

  PanelFields& fields_;
  SettingsStore& store_;
  MessageBox& message_box_;
  CheckAccess check_access_;
  OnValueChanged on_value_changed_;
  PanelValues values_;
};

}  // namespace korval::host
