// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractButton>

#include "ui/Pictures.h"

namespace korval::ui {

/// One of the two images of the serial line's state; a click, or the space bar, toggles the port.
class StateImage : public QAbstractButton {
  Q_OBJECT

 public:
  StateImage(const QString& name, const QString& accessible_name, Picture picture, QWidget* parent = nullptr);

  QSize sizeHint() const override { return {32, 32}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Picture picture_;
};

}  // namespace korval::ui
