// SPDX-License-Identifier: MIT
// A client on a real socket, the control on a real window, and the simulated ECU behind it.
#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <gmock/gmock.h>

#include "client/ClientErrors.h"
#include "tests/ui/SessionWindowTest.h"
#include "ui/RowList.h"
#include "ui/StatusPanels.h"
#include "ui/TerminalBox.h"

namespace korval::tests {
namespace {

using ::testing::HasSubstr;

constexpr char kDescription[] =
    "<xml><ecu name='MAP' url='engine_ecu.xml'><data name='EngineSpeed' shortname='N'/></ecu>"
    "<ecu name='SLOW' url='slow_ecu.xml'><data name='EngineSpeed' shortname='N'/></ecu></xml>";

// An ECU that answers after `latency_ms`, and whose speed is another one at each reading.
std::string EcuFile(const std::string& function, const std::string& protocol, int latency_ms) {
  return "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='" + function + "' Protocol='" +
         protocol +
         "' Ecu='Engine control' P2Ms='60000' KeepAliveMs='0'/><Requests><Request Name='READ'><Sent "
         "Bytes='2101'/>"
         "<Received MinBytes='4'><DataItem Name='EngineSpeed' Ref='1' FirstByte='3' "
         "BitsCount='16'/></Received>"
         "</Request></Requests></qor:Target><Simulation LatencyMs='" +
         std::to_string(latency_ms) +
         "'><Signal Item='EngineSpeed' Wave='ramp' Min='0' Max='60000' PeriodMs='1000'/>"
         "<Answer Request='2180' Response='618041'/></Simulation></xml>";
}

class WindowSessionTest : public SessionWindowTest {
 protected:
  WindowSessionTest()
      : SessionWindowTest(kDescription,
                          [](ecu::SessionEnvironment& environment) { environment.port = "SIM"; }) {
    folder_.Write("engine_ecu.xml", EcuFile("ENGINE", "KWP2000", 0));
    // Without CAN messaging its identification is not asked for, which would wait already.
    folder_.Write("slow_ecu.xml", EcuFile("SLOW", "DiagOnCAN", 20000));
  }

  // Everything up to the first value; gives the file's number.
  static std::uint16_t Select(client::Asap3Client& client, const std::string& section) {
    client.Init();
    client.Identify(0x0201, "bench");
    return client.SelectFile("engine.xml", section, 0);
  }
  // Does `act` while the client's command waits for the slow ECU; gives what the client was told.
  std::string WhileWaiting(const std::function<void()>& act) {
    client::Asap3Client client = Connect();
    const std::uint16_t lun = Select(client, "SLOW");
    loop_->on_wait = act;
    try {
      client.GetParameter(lun, "N");
    } catch (const client::LinkError&) {
      return "link error";
    } catch (const client::ErrorReply& reply) {
      return reply.Description();
    }
    return "answer";
  }

  template <typename Widget>
  Widget& Find(const char* name) const {
    return WidgetTest::Find<Widget>(*control_, name);
  }
  QString Cell(const char* list, int row, int column) const {
    return Find<ui::RowList>(list).model()->index(row, column).data().toString();
  }
  QString SessionStatus() const { return Find<QLabel>("lbStatus").text(); }
  // What the list shows while the client reads online values: up to `count` different values one after the
  // other.
  QStringList ValuesShown(client::Asap3Client& client, int count) const {
    QStringList shown;
    const auto is_shown = [&] {
      client.OnlineValues();
      const QString value = Cell("LVdata", 0, 2);
      if (shown.isEmpty() || shown.back() != value) shown << value;
      return shown.size() >= count;
    };
    for (const QDeadlineTimer end(500); !end.hasExpired() && !is_shown();) QTest::qWait(1);
    return shown;
  }
  bool RunUntilShown(const char* list, int column, const QString& text) const {
    return RunUntil([&] { return Cell(list, 0, column) == text; });
  }
};

TEST_F(WindowSessionTest, TheStateOfTheSessionIsShownAtEveryStep) {
  client::Asap3Client client = Connect();
  EXPECT_EQ(SessionStatus(), "Status: Idle");
  client.Init();
  EXPECT_EQ(SessionStatus(), "Status: Init");
  client.Identify(0x0201, "bench");
  EXPECT_EQ(SessionStatus(), "Status: Identify");
  EXPECT_TRUE(Find<QLabel>("lbRemote").text().contains("bench"));
  client.SelectFile("engine.xml", "MAP", 7);
  EXPECT_EQ(SessionStatus(), "Status: Select File");
  client.Exit();
  EXPECT_EQ(SessionStatus(), "Status: Idle");
}

TEST_F(WindowSessionTest, ASelectedFileIsListedWithTheIdentificationOfItsEcu) {
  client::Asap3Client client = Connect();
  client.Init();
  client.Identify(0x0201, "bench");
  client.SelectFile("engine.xml", "MAP", 7);
  ASSERT_TRUE(RunUntilShown("LVfile", 6, "618041"));
  EXPECT_EQ(Cell("LVfile", 0, 0), "1");
  EXPECT_EQ(Cell("LVfile", 0, 1), "engine.xml");
  EXPECT_EQ(Cell("LVfile", 0, 2), "MAP");
  EXPECT_EQ(Cell("LVfile", 0, 3), "7");
  EXPECT_EQ(Cell("LVfile", 0, 4), "ENGINE");
  EXPECT_EQ(Cell("LVfile", 0, 5), "KWP2000");
  client.Exit();
  EXPECT_TRUE(RunUntil([this] { return Find<ui::RowList>("LVfile").model()->rowCount() == 0; }));
}

TEST_F(WindowSessionTest, ValuesTickInTheListWhileShowvalueIsTicked) {
  client::Asap3Client client = Connect();
  const std::uint16_t lun = Select(client, "MAP");
  client.SetAcquisition(lun, 100, {"N"});
  ASSERT_TRUE(RunUntilShown("LVdata", 0, "N"));
  EXPECT_EQ(ValuesShown(client, 3), QStringList{"0"});
  Click(Find<QCheckBox>("showvalue"));
  EXPECT_EQ(ValuesShown(client, 3).size(), 3);
  EXPECT_EQ(Cell("LVdata", 0, 3), "EngineSpeed");
}

TEST_F(WindowSessionTest, ReadDataAndReadIdentWorkBesideTheClient) {
  client::Asap3Client client = Connect();
  const std::uint16_t lun = Select(client, "MAP");
  client.SetAcquisition(lun, 100, {"N"});
  ASSERT_TRUE(RunUntilShown("LVdata", 2, "0"));
  Click(Find<QPushButton>("ReadData"));
  EXPECT_TRUE(RunUntil([this] { return Cell("LVdata", 0, 2) != "0"; }));
  Click(Find<QPushButton>("ReadIdent"));
  EXPECT_TRUE(RunUntil([this] {
    return Find<ui::TerminalBox>("txtTerm").toPlainText().contains("Read Ecu Ident : ENGINE = 618041");
  }));
}

TEST_F(WindowSessionTest, TheConnectionClockTicksBesideTheClient) {
  client::Asap3Client client = Connect();
  Select(client, "MAP");
  Click(Find<QWidget>("imgNotConnected"));
  EXPECT_EQ(Find<ui::StatusPanels>("sbrStatus").PanelText("ConnectTime"), "00:00:00 ");
  EXPECT_TRUE(RunUntil(
      [this] { return Find<ui::StatusPanels>("sbrStatus").PanelText("ConnectTime") >= "00:00:01 "; }));
}

TEST_F(WindowSessionTest, ResetAllInTheMiddleOfAWaitingCommandEndsItAndTheNextClientIsServed) {
  EXPECT_EQ(WhileWaiting([this] { Click(Find<QPushButton>("ResetAll")); }), "link error");
  EXPECT_EQ(SessionStatus(), "Status: Idle");
  client::Asap3Client next = Connect();
  const std::uint16_t lun = Select(next, "MAP");
  EXPECT_GE(next.GetParameter(lun, "N").value, 0);
}

TEST_F(WindowSessionTest, ClosingTheWindowInTheMiddleOfAWaitingCommandEndsItWithoutAnAnswer) {
  EXPECT_EQ(WhileWaiting([this] { control_.reset(); }), "link error");
}

TEST_F(WindowSessionTest, ClosingTheWindowInTheMiddleOfAManualReadEndsIt) {
  client::Asap3Client client = Connect();
  const std::uint16_t lun = Select(client, "SLOW");
  client.SetAcquisition(lun, 100, {"N"});
  loop_->on_wait = [this] { control_.reset(); };
  Find<QPushButton>("ReadData").click();
  EXPECT_TRUE(RunUntil([this] { return control_ == nullptr; }));
}

TEST_F(WindowSessionTest, AManualReadInTheMiddleOfAWaitingCommandLeavesTheServerServing) {
  const std::string told = WhileWaiting([this] {
    Click(Find<QPushButton>("ReadIdent"));
    Click(Find<QPushButton>("ReadData"));
    Click(Find<QPushButton>("ResetAll"));
  });
  EXPECT_EQ(told, "link error");
  client::Asap3Client next = Connect();
  const std::uint16_t lun = Select(next, "MAP");
  EXPECT_GE(next.GetParameter(lun, "N").value, 0);
}

TEST_F(WindowSessionTest, TheSettingsPanelInTheMiddleOfAWaitingCommandEndsIt) {
  EXPECT_EQ(WhileWaiting([this] {
              control_->findChild<QAction*>("Properties")->trigger();
              Find<QPushButton>("cmdCancel").click();
            }),
            "link error");
  client::Asap3Client next = Connect();
  const std::uint16_t lun = Select(next, "MAP");
  EXPECT_GE(next.GetParameter(lun, "N").value, 0);
}

}  // namespace
}  // namespace korval::tests
