// SPDX-License-Identifier: MIT
#include "ui/UsualParts.h"

#include <utility>

#include <QCoreApplication>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "host/trace/TraceConsole.h"
#include "platform/DevicePortScout.h"
#include "platform/QSettingsStore.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"
#include "platform/QtTcpSocket.h"
#include "platform/logind/LogindPower.h"

namespace korval::ui {
namespace {

std::shared_ptr<viator3::Session> NoSession() {
  throw base::Failure(
      kNoInterface,
      "No diagnostic session: the host application has to hand one over before the client's init");
}

}  // namespace

host::ControlParts CompleteWithUsualParts(host::ControlParts views) {
  host::ControlParts parts = std::move(views);
  const auto trace = [terminal = parts.terminal](const std::string& text) {
    host::TraceConsole(*terminal).Line(text);
  };
  const auto report = [box = parts.message_box](const std::string& text) {
    box->Show(text, host::MessageStyle::kExclamation);
  };
  parts.application_folder = QCoreApplication::applicationDirPath().toStdString();
  parts.loop = std::make_shared<platform::QtEventLoop>();
  parts.settings = std::make_shared<platform::QSettingsStore>(QString(), QString(), report);
  parts.power = std::make_shared<platform::LogindPower>();
  const auto serial_port = std::make_shared<platform::QtSerialPort>(trace);
  parts.serial_port = serial_port;
  parts.tcp_server = std::make_shared<platform::QtTcpSocket>(trace);
  parts.port_scout = std::make_shared<platform::DevicePortScout>(
      parts.loop, [serial_port] { return serial_port->Device(); });
  parts.create_session = NoSession;
  return parts;
}

}  // namespace korval::ui
