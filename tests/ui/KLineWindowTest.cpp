// SPDX-License-Identifier: MIT
// The window while an ECU on a real serial line is waited for.
#include <memory>
#include <string>

#include <QEvent>
#include <QPushButton>
#include <QTimer>

#include "client/ClientErrors.h"
#include "platform/SerialKLineWire.h"
#include "tests/platform/PseudoTerminal.h"
#include "tests/ui/SessionWindowTest.h"
#include "ui/TerminalBox.h"

namespace korval::tests {
namespace {

constexpr char kDescription[] =
    "<xml><ecu name='MAP' url='engine_ecu.xml'><data name='EngineSpeed' shortname='N'/></ecu></xml>";
constexpr char kEcuFile[] =
    "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='ENGINE' Init='none' P2Ms='60000' P4Ms='0' "
    "KeepAliveMs='0'/></qor:Target></xml>";

/// Counts what is drawn anew.
class PaintCounter : public QObject {
 public:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++count;
    return false;
  }

  int count = 0;
};

class KLineWindowTest : public SessionWindowTest {
 protected:
  KLineWindowTest()
      : SessionWindowTest(kDescription, [this](ecu::SessionEnvironment& environment) {
          environment.port = line_.Device();
          environment.open_kline_wire = [](const std::string& device) {
            return std::make_unique<platform::SerialKLineWire>(device, [](const std::string&) {});
          };
        }) {
    folder_.Write("engine_ecu.xml", kEcuFile);
  }

  /// The request is on the line, and nobody answers.
  bool IsExchangeInProgress() { return !line_.Received().Empty(); }
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

  platform::PseudoTerminal line_;
};

TEST_F(KLineWindowTest, ItIsDrawnAndItsTimersFireWhileAnEcuOnTheKLineIsWaitedFor) {
  client::Asap3Client client = Connect();
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
