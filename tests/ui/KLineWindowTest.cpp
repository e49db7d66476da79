// SPDX-License-Identifier: MIT
// The window while an ECU on a real serial line is waited for.
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <QEvent>
#include <QPushButton>
#include <QTimer>

#include "client/Asap3Client.h"
#include "client/ClientErrors.h"
#include "client/DeviceChannel.h"
#include "ecu/session/SessionFactory.h"
#include "host/control/ControlParts.h"
#include "platform/QtEventLoop.h"
#include "platform/QtTcpSocket.h"
#include "platform/SerialKLineWire.h"
#include "tests/platform/PseudoTerminal.h"
#include "tests/support/FakePower.h"
#include "tests/support/FakeSerialPort.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/TempFolder.h"
#include "tests/ui/WidgetTest.h"
#include "ui/KorvAsapServer.h"
#include "ui/TerminalBox.h"

namespace korval::tests {
namespace {

using std::chrono::seconds;

constexpr char kDescription[] =
    "<xml><ecu name='MAP' url='engine_ecu.xml'><data name='EngineSpeed' shortname='N'/></ecu></xml>";
constexpr char kEcuFile[] =
    "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='ENGINE' Init='none' P2Ms='60000' P4Ms='0' "
    "KeepAliveMs='0'/></qor:Target></xml>";

/// Tells when an ECU is waited for.
class WatchedLoop : public platform::QtEventLoop {
 public:
  bool RunUntil(base::TimePoint deadline, const std::function<bool()>& done) override {
    if (on_wait) QTimer::singleShot(0, qApp, std::exchange(on_wait, nullptr));
    ++waits;
    const bool is_done = QtEventLoop::RunUntil(deadline, done);
    --waits;
    return is_done;
  }

  /// Called once, from within the wait.
  std::function<void()> on_wait;
  int waits = 0;
};

/// Counts what is drawn anew.
class PaintCounter : public QObject {
 public:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++count;
    return false;
  }

  int count = 0;
};

class KLineWindowTest : public WidgetTest {
 protected:
  KLineWindowTest() {
    folder_.Write("engine.xml", kDescription);
    folder_.Write("engine_ecu.xml", kEcuFile);
    settings_->user = {{"KorvalAsapServer/Properties/AsapFolder", folder_.Path()},
                       {"KorvalAsapServer/Properties/KorvFolder", folder_.Path()}};
    control_ = std::make_unique<ui::KorvAsapServer>(
        [this](host::ControlParts views) { return Complete(std::move(views)); });
    control_->resize(1000, 700);
    Show(*control_);
  }

  host::ControlParts Complete(host::ControlParts parts) {
    parts.loop = loop_;
    parts.settings = settings_;
    parts.power = std::make_shared<FakePower>(log_);
    parts.tcp_server = tcp_;
    parts.tcp_port = 0;
    parts.serial_port = std::make_shared<FakeSerialPort>(log_);
    parts.create_session = [this] {
      ecu::SessionEnvironment environment;
      environment.loop = loop_;
      environment.port = line_.Device();
      environment.ecu_folder = folder_.Path();
      environment.open_kline_wire = [](const std::string& device) {
        return std::make_unique<platform::SerialKLineWire>(device, [](const std::string&) {});
      };
      return ecu::CreateSession(environment);
    };
    return parts;
  }

  /// The request is on the line, nobody answers, and the command waits.
  bool IsExchangeInProgress() { return !line_.Received().Empty() && loop_->waits > 0; }
  bool TimerFires() const {
    bool fired = false;
    QTimer::singleShot(1, control_.get(), [&fired] { fired = true; });
    return RunUntil([&fired] { return fired; });
  }
  bool IsDrawnAnew(QWidget& widget) const {
    PaintCounter paints;
    widget.installEventFilter(&paints);
    widget.update();
    return RunUntil([&paints] { return paints.count > 0; });
  }

  TempFolder folder_;
  CallLog log_;
  platform::PseudoTerminal line_;
  std::shared_ptr<WatchedLoop> loop_ = std::make_shared<WatchedLoop>();
  std::shared_ptr<MemorySettings> settings_ = std::make_shared<MemorySettings>();
  std::shared_ptr<platform::QtTcpSocket> tcp_ = std::make_shared<platform::QtTcpSocket>(
      QHostAddress(QHostAddress::LocalHost), platform::QtTcpSocket::Subnets(), [](const std::string&) {});
  std::unique_ptr<ui::KorvAsapServer> control_;
};

TEST_F(KLineWindowTest, ItIsDrawnAndItsTimersFireWhileAnEcuOnTheKLineIsWaitedFor) {
  client::Asap3Client client(client::ConnectTcp("127.0.0.1", tcp_->LocalPort(), seconds(20)), seconds(20));
  client.Init();
  client.Identify(0x0201, "bench");
  bool watched = false;
  loop_->on_wait = [&] {
    EXPECT_TRUE(RunUntil([this] { return IsExchangeInProgress(); }));
    EXPECT_TRUE(TimerFires());
    EXPECT_TRUE(IsDrawnAnew(*control_));
    EXPECT_TRUE(IsDrawnAnew(*Find<ui::TerminalBox>(*control_, "txtTerm").viewport()));
    watched = IsExchangeInProgress();
    Click(Find<QPushButton>(*control_, "ResetAll"));
  };
  // The selection asks for the ECU's identification, which never comes.
  EXPECT_THROW(client.SelectFile("engine.xml", "MAP", 0), client::LinkError);
  EXPECT_TRUE(watched);
}

}  // namespace
}  // namespace korval::tests
