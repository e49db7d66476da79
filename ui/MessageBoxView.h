// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>
#include <QWidget>

#include "host/trace/MessageBox.h"

namespace korval::ui {

/// Message boxes beside a window, which goes on working while they are open. A text that is on a box
/// already brings that box to the front.
class MessageBoxView : public host::MessageBox {
 public:
  /// The boxes go with `parent`.
  explicit MessageBoxView(QWidget* parent) : parent_(parent) {}

  void Show(const std::string& text, host::MessageStyle style) override;

 private:
  QPointer<QWidget> parent_;
};

}  // namespace korval::ui
