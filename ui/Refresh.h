// SPDX-License-Identifier: MIT
#pragma once

#include <QTimer>

namespace korval::ui {

/// Shows what changed, at most some twenty times a second, however often it changes.
class Refresh {
 public:
  template <typename Show>
  Refresh(QObject* context, Show show) {
    timer_.setSingleShot(true);
    timer_.setInterval(kIntervalMs);
    QObject::connect(&timer_, &QTimer::timeout, context, show);
  }

  /// Something changed.
  void Ask() {
    if (!timer_.isActive()) timer_.start();
  }

 private:
  static constexpr int kIntervalMs = 50;

  QTimer timer_;
};

}  // namespace korval::ui
