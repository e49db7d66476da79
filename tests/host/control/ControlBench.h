// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "host/control/ServerControl.h"
#include "host/trace/TextTerminal.h"
#include "tests/host/control/FakeSettingsPanel.h"
#include "tests/support/Await.h"
#include "tests/support/FakePortLabel.h"
#include "tests/support/FakePortScout.h"
#include "tests/support/FakePower.h"
#include "tests/support/FakeSerialPort.h"
#include "tests/support/FakeSession.h"
#include "tests/support/FakeStatusView.h"
#include "tests/support/FakeTcpSocket.h"
#include "tests/support/ManualEventLoop.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/RecordingListView.h"

namespace korval::tests {

inline const base::ByteBuffer kInit{0x00, 0x06, 0x00, 0x02, 0x00, 0x08};
inline const base::ByteBuffer kExit{0x00, 0x06, 0x00, 0x32, 0x00, 0x38};

/// The control with an outside that the test plays. Transports, panel and message box share one log.
class ControlBench : public ::testing::Test {
 protected:
  ControlBench() {
    parts.loop = loop;
    parts.terminal = terminal;
    parts.status = status;
    parts.files = files;
    parts.data = data;
    parts.panel = panel;
    parts.port_label = label;
    parts.port_scout = scout;
    parts.message_box = std::make_shared<FakeMessageBox>(log);
    parts.settings = settings;
    parts.power = std::make_shared<FakePower>(log);
    parts.tcp_server = tcp;
    parts.serial_port = serial;
    parts.create_session = [this] { return session; };
    parts.application_folder = "/opt/korval";
  }

  std::shared_ptr<host::ServerControl> Started() {
    auto control = host::ServerControl::Create(parts);
    EXPECT_TRUE(control->Initialise());
    control->Show();
    return control;
  }

  std::string Trace() const { return terminal->Text(); }
  void ForgetTrace() { terminal->DropFirst(terminal->Length()); }
  void Store(const std::string& key, const std::string& value) {
    settings->user["KorvalAsapServer/Properties/" + key] = value;
  }

  CallLog log;
  std::shared_ptr<ManualEventLoop> loop = std::make_shared<ManualEventLoop>();
  host::ControlParts parts;
  std::shared_ptr<host::TextTerminal> terminal = std::make_shared<host::TextTerminal>();
  std::shared_ptr<FakeStatusView> status = std::make_shared<FakeStatusView>();
  std::shared_ptr<RecordingListView> files = std::make_shared<RecordingListView>();
  std::shared_ptr<RecordingListView> data = std::make_shared<RecordingListView>();
  std::shared_ptr<FakeSettingsPanel> panel = std::make_shared<FakeSettingsPanel>(log);
  std::shared_ptr<FakePortLabel> label = std::make_shared<FakePortLabel>();
  std::shared_ptr<FakePortScout> scout = std::make_shared<FakePortScout>();
  std::shared_ptr<MemorySettings> settings = std::make_shared<MemorySettings>();
  std::shared_ptr<FakeTcpSocket> tcp = std::make_shared<FakeTcpSocket>(log);
  std::shared_ptr<FakeSerialPort> serial = std::make_shared<FakeSerialPort>(log);
  std::shared_ptr<FakeSession> session = std::make_shared<FakeSession>();
};

}  // namespace korval::tests
