// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <QTimer>

#include "client/Asap3Client.h"
#include "client/device/DeviceChannel.h"
#include "ecu/session/SessionFactory.h"
#include "host/control/ControlParts.h"
#include "platform/QtEventLoop.h"
#include "platform/QtTcpSocket.h"
#include "tests/support/FakePower.h"
#include "tests/support/FakeSerialPort.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/TempFolder.h"
#include "tests/ui/WidgetTest.h"
#include "ui/KorvAsapServer.h"

namespace korval::tests {

/// Tells when an ECU is waited for: a time is set for its answer then.
class WatchedLoop : public platform::QtEventLoop {
 public:
  std::unique_ptr<base::Timer> CreateTimer(std::function<void()> fire) override {
    Notice();
    return QtEventLoop::CreateTimer(std::move(fire));
  }
  std::unique_ptr<base::Deadline> CreateDeadline(std::function<void()> passed) override {
    Notice();
    return QtEventLoop::CreateDeadline(std::move(passed));
  }

  /// Called once, as an event during the wait.
  std::function<void()> on_wait;

 private:
  void Notice() {
    if (on_wait) QTimer::singleShot(0, qApp, std::exchange(on_wait, nullptr));
  }
};

/// The control on a real window, with a real socket and a session of ours. The description file is
/// "engine.xml".
class SessionWindowTest : public WidgetTest {
 protected:
  using Complete = std::function<void(ecu::SessionEnvironment&)>;

  /// `complete` gives each session its port, and what the port needs.
  SessionWindowTest(const std::string& description, Complete complete) : complete_(std::move(complete)) {
    folder_.Write("engine.xml", description);
    settings_->user = {{"KorvalAsapServer/Properties/AsapFolder", folder_.Path()},
                       {"KorvalAsapServer/Properties/KorvFolder", folder_.Path()},
                       {"KorvalAsapServer/Properties/Listen", "127.0.0.1"}};
    control_ = std::make_unique<ui::KorvAsapServer>(
        [this](host::ControlParts views) { return WithParts(std::move(views)); });
    control_->resize(1000, 700);
    Show(*control_);
  }

  client::Asap3Client Connect() const {
    constexpr std::chrono::seconds kPatience(20);
    return {client::ConnectTcp("127.0.0.1", tcp_->LocalPort(), kPatience), kPatience};
  }

  TempFolder folder_;
  CallLog log_;
  std::shared_ptr<WatchedLoop> loop_ = std::make_shared<WatchedLoop>();
  std::shared_ptr<MemorySettings> settings_ = std::make_shared<MemorySettings>();
  std::shared_ptr<platform::QtTcpSocket> tcp_ = std::make_shared<platform::QtTcpSocket>();
  std::unique_ptr<ui::KorvAsapServer> control_;

 private:
  host::ControlParts WithParts(host::ControlParts parts) {
    parts.loop = loop_;
    parts.settings = settings_;
    parts.power = std::make_shared<FakePower>(log_);
    parts.tcp_server = tcp_;
    parts.tcp_port = 0;
    parts.serial_port = std::make_shared<FakeSerialPort>(log_);
    parts.create_session = [this] {
      ecu::SessionEnvironment environment;
      environment.loop = loop_;
      environment.ecu_folder = folder_.Path();
      complete_(environment);
      return ecu::CreateSession(environment);
    };
    return parts;
  }

  Complete complete_;
};

}  // namespace korval::tests
