// SPDX-License-Identifier: MIT
#include "window/DisplayGuard.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include <QString>

namespace korval::apps {
namespace {

// Qt says why in the warnings before it gives up.
std::string& Reason() {
  static std::string reason;
  return reason;
}

[[noreturn]] void GiveUp() {
  std::fprintf(stderr,
               "korval-asap-server: no window can be opened (%s): run it in a graphical session, or start it "
               "with --headless\n",
               Reason().empty() ? "no display" : Reason().c_str());
  std::_Exit(1);
}

void OnMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type == QtFatalMsg) GiveUp();
  if (type == QtWarningMsg && Reason().empty()) Reason() = text.simplified().toStdString();
}

}  // namespace

DisplayGuard::DisplayGuard() : before_(qInstallMessageHandler(OnMessage)) {}

DisplayGuard::~DisplayGuard() {
  qInstallMessageHandler(before_);
  Reason().clear();
}

}  // namespace korval::apps
