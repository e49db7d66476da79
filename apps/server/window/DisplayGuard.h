// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace korval::apps {

/// While it lives, Qt's end of the process for want of a display (an X server or Wayland compositor that is
/// not there, a missing platform plugin) is a sentence on standard error and exit status 1 instead of an
/// abort. Hold one while the QApplication is constructed, and no longer.
class DisplayGuard {
 public:
  DisplayGuard();
  ~DisplayGuard();
  DisplayGuard(const DisplayGuard&) = delete;
  DisplayGuard& operator=(const DisplayGuard&) = delete;

 private:
  QtMessageHandler before_;
};

}  // namespace korval::apps
