// SPDX-License-Identifier: MIT
#pragma once

#include "host/control/PanelValues.h"

namespace korval::host {

/// The seam to the settings panel on the control's face (`ConfigComPort1`). Its owner passes the panel's
/// `ValueChanged` on to the control.
class SettingsPanel {
 public:
  virtual ~SettingsPanel() = default;
  /// Loads the fields.
  virtual void SetValue(const PanelValues& values) = 0;
  /// The values of the last OK.
  virtual PanelValues Values() const = 0;
  /// Shows the panel in front of everything else, or hides it.
  virtual void SetVisible(bool visible) = 0;
};

}  // namespace korval::host
