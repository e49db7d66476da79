// SPDX-License-Identifier: MIT
#pragma once

#include "host/control/SettingsPanel.h"
#include "tests/support/CallLog.h"

namespace korval::tests {

/// A settings panel in memory. Logs "panel loaded", "panel shown" and "panel hidden".
class FakeSettingsPanel : public host::SettingsPanel {
 public:
  explicit FakeSettingsPanel(CallLog& log) : log_(log) {}

  void SetValue(const host::PanelValues& new_values) override {
    values = new_values;
    log_.emplace_back("panel loaded");
  }
  host::PanelValues Values() const override { return values; }
  void SetVisible(bool visible) override { log_.emplace_back(visible ? "panel shown" : "panel hidden"); }

  host::PanelValues values;

 private:
  CallLog& log_;
};

}  // namespace korval::tests
