// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>

#include "base/VisibleText.h"
#include "host/trace/StatusView.h"
#include "ui/Face.h"

namespace korval::ui {

/// The console's state on the control's face, which may go first.
class StatusFace : public host::StatusView {
 public:
  explicit StatusFace(Face* face) : face_(face) {}

  void ShowSessionStatus(const std::string& text) override {
    if (face_) face_->ShowSessionStatus(QString::fromStdString(text));
  }
  void ShowRemoteSystem(const std::string& text) override {
    if (face_) face_->ShowRemoteSystem(QString::fromStdString(base::VisibleText(text)));
  }
  void ShowPanel(const std::string& key, const std::string& text) override {
    if (face_) face_->Panels().ShowPanel(QString::fromStdString(key), QString::fromStdString(text));
  }
  void ShowConnected(bool connected) override {
    if (face_) face_->ShowConnected(connected);
  }

 private:
  QPointer<Face> face_;
};

}  // namespace korval::ui
