// SPDX-License-Identifier: MIT
#include "platform/process/RunWhile.h"

#include <chrono>

#include <QCoreApplication>
#include <QTimer>

namespace korval::platform {

void RunWhile(const std::function<bool()>& is_unfinished) {
  if (!is_unfinished || !is_unfinished()) return;
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, [&is_unfinished] {
    if (!is_unfinished()) QCoreApplication::quit();
  });
  look.start(std::chrono::milliseconds(10));
  QCoreApplication::exec();
}

}  // namespace korval::platform
