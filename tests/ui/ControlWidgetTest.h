// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include <QAction>
#include <QMessageBox>

#include "host/control/ControlParts.h"
#include "tests/support/FakePortScout.h"
#include "tests/support/FakePower.h"
#include "tests/support/FakeSerialPort.h"
#include "tests/support/FakeSession.h"
#include "tests/support/FakeTcpSocket.h"
#include "tests/support/ManualEventLoop.h"
#include "tests/support/MemorySettings.h"
#include "tests/ui/WidgetTest.h"
#include "ui/KorvAsapServer.h"
#include "ui/RowListView.h"
#include "ui/StatusPanels.h"
#include "ui/TerminalBox.h"
#include "ui/TerminalView.h"

namespace korval::tests {

inline const base::ByteBuffer kInit{0x00, 0x06, 0x00, 0x02, 0x00, 0x08};

/// The control with its real face, on transports, settings, clock and session that the test plays.
class ControlWidgetTest : public WidgetTest {
 protected:
  void Create() {
    control_ = std::make_unique<ui::KorvAsapServer>([this](host::ControlParts views) {
      parts_ = std::move(views);
      parts_.loop = loop_;
      parts_.port_scout = scout_;
      parts_.settings = settings_;
      parts_.power = std::make_shared<FakePower>(log_);
      parts_.tcp_server = tcp_;
      parts_.serial_port = serial_;
      parts_.create_session = [this] { return session_; };
      parts_.application_folder = "/opt/korval";
      return parts_;
    });
    control_->resize(1000, 700);
  }
  void CreateAndShow() {
    Create();
    Show(*control_);
  }

  template <typename Widget>
  Widget& Find(const char* name) const {
    return WidgetTest::Find<Widget>(*control_, name);
  }
  QAction& Action(const char* key) const {
    auto* found = control_->findChild<QAction*>(QString::fromLatin1(key));
    if (found == nullptr) throw std::runtime_error(std::string("there is no ") + key);
    return *found;
  }
  QString Panel(const char* key) const { return Find<ui::StatusPanels>("sbrStatus").PanelText(key); }
  QString Cell(const char* list, int row, int column) const {
    const auto* model = Find<ui::RowList>(list).model();
    return model->index(row, column).data().toString();
  }
  /// The trace, with LF as line end, as the box shows it.
  QString Trace() {
    dynamic_cast<ui::TerminalView&>(*parts_.terminal).ShowNow();
    return Find<ui::TerminalBox>("txtTerm").toPlainText();
  }
  /// The message box that is open, null when none is.
  QMessageBox* OpenBox() const {
    for (auto* box : control_->findChildren<QMessageBox*>()) {
      if (box->isVisible()) return box;
    }
    return nullptr;
  }
  void Store(const std::string& key, const std::string& value) {
    settings_->user["KorvalAsapServer/Properties/" + key] = value;
  }
  std::string Stored(const std::string& key) { return settings_->user["KorvalAsapServer/Properties/" + key]; }

  CallLog log_;
  std::shared_ptr<ManualEventLoop> loop_ = std::make_shared<ManualEventLoop>();
  std::shared_ptr<FakePortScout> scout_ = std::make_shared<FakePortScout>();
  std::shared_ptr<MemorySettings> settings_ = std::make_shared<MemorySettings>();
  std::shared_ptr<FakeTcpSocket> tcp_ = std::make_shared<FakeTcpSocket>(log_);
  std::shared_ptr<FakeSerialPort> serial_ = std::make_shared<FakeSerialPort>(log_);
  std::shared_ptr<FakeSession> session_ = std::make_shared<FakeSession>();
  host::ControlParts parts_;
  std::unique_ptr<ui::KorvAsapServer> control_;
};

}  // namespace korval::tests
