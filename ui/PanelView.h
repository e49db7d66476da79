// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>
#include <QStackedLayout>

#include "host/control/SettingsPanel.h"
#include "ui/ConfigComPort.h"
#include "ui/Face.h"

namespace korval::ui {

/// The settings panel in front of the control's face, whose actions wait meanwhile; all may go first.
class PanelView : public host::SettingsPanel {
 public:
  /// The stack holds the face as its first page and the panel on its second.
  PanelView(QStackedLayout* stack, Face* face, ConfigComPort* panel)
      : stack_(stack), face_(face), panel_(panel) {}

  void SetValue(const host::PanelValues& values) override {
    if (panel_) panel_->Load(values);
  }
  host::PanelValues Values() const override { return panel_ ? panel_->Values() : host::PanelValues(); }
  void SetVisible(bool visible) override {
    if (!stack_ || !face_ || !panel_) return;
    face_->SetActionsEnabled(!visible);
    stack_->setCurrentIndex(visible ? 1 : 0);
    if (visible) panel_->setFocus();
  }

 private:
  QPointer<QStackedLayout> stack_;
  QPointer<Face> face_;
  QPointer<ConfigComPort> panel_;
};

}  // namespace korval::ui
