// SPDX-License-Identifier: MIT
#include "platform/logind/LogindPower.h"

#include <string>

#include <QDBusMessage>
#include <QString>

#include "base/Failure.h"

namespace korval::platform {
namespace {

constexpr int kCallTimeoutMs = 5000;
constexpr bool kAskForPassword = false;  // nobody may sit at the test bench

}  // namespace

void LogindPower::ExitWindows(std::uint32_t flags, std::uint32_t) {
  const bool reboot = (flags & kReboot) != 0;
  QDBusMessage call =
      QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                     "org.freedesktop.login1.Manager", reboot ? "Reboot" : "PowerOff");
  call << kAskForPassword;
  const QDBusMessage answer = connect_().call(call, QDBus::Block, kCallTimeoutMs);
  if (answer.type() != QDBusMessage::ErrorMessage) return;
  throw base::Failure(std::string("the system's power service does not ") +
                      (reboot ? "restart" : "shut down") +
                      " the computer: " + answer.errorMessage().toStdString() +
                      " (the server's user needs a polkit rule that allows org.freedesktop.login1 to do so)");
}

}  // namespace korval::platform
