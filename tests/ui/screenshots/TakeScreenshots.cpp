// SPDX-License-Identifier: MIT
// Takes pictures of the server's window: takescreenshots FOLDER ASAP3 EXAMPLES (the client program, the
// examples' folder). A picture is only taken of what it is meant to show; exit status 1 when one is missing.
// Everything runs on loopback, on settings and devices of its own, and no power request is ever sent.
#include <cstdio>
#include <functional>
#include <stdexcept>

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QStyleFactory>
#include <QTcpServer>
#include <QTemporaryDir>

#include "ControlAssembly.h"
#include "PseudoTerminal.h"
#include "diag/PortLabel.h"
#include "tests/support/FakePortScout.h"
#include "ui/Pictures.h"
#include "ui/PortLabelBox.h"
#include "window/MainWindow.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

constexpr int kPatienceMs = 30000;
constexpr int kSettlingMs = 300;  // for layout and painting, and for the trace to catch up
constexpr char kSimulatedEcu[] = "[QOR]\nGeneral\\CommPort=SIM\n";
constexpr char kUnpluggedInterface[] = "[QOR]\nGeneral\\CommPort=NONE\nHardware\\InstanceName=KD-20417\n";

void Require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error("not so: " + what);
}

void WaitUntil(const std::function<bool()>& done, const std::string& what) {
  const QDeadlineTimer end(kPatienceMs);
  while (!done()) {
    Require(!end.hasExpired(), what);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
  }
}

std::uint16_t FreePort() {
  QTcpServer server;
  Require(server.listen(QHostAddress::LocalHost), "a TCP port is free");
  return server.serverPort();
}

// The server's window on settings and a serial line of its own, with no interface plugged in.
class Scene {
 public:
  explicit Scene(const char* settings = kSimulatedEcu) {
    const QString settings_file = folder_.filePath("user.ini");
    QFile file(settings_file);
    Require(file.open(QIODevice::WriteOnly) && file.write(settings) > 0, "the settings can be written");
    file.close();
    apps::ServerOptions options;
    options.serial_device = line_.Device();
    options.listen = "127.0.0.1";
    options.tcp_port = FreePort();
    options.dry_run_power = true;
    options.settings_file = settings_file.toStdString();
    options.install_record_file = folder_.filePath("machine.ini").toStdString();
    const std::string examples = QCoreApplication::arguments().at(3).toStdString();
    options.asap_folder = examples + "/asap";
    options.korv_folder = examples + "/ecu";
    auto* control = new ui::KorvAsapServer([&](host::ControlParts views) {
      parts_ = apps::CompleteParts(options, std::move(views));
      parts_.port_scout = std::make_shared<tests::FakePortScout>();
      return parts_;
    });
    window_ = std::make_unique<apps::MainWindow>(control, parts_.settings,
                                                 [] { return std::vector<platform::PluggedInterface>(); });
    window_->show();
    WaitUntil([&] { return parts_.tcp_server->CurrentState() != protocol::TcpSocket::State::kClosed; },
              "the server listens");
  }

  template <typename Widget>
  Widget& Find(const char* name) const {
    auto* found = window_->findChild<Widget*>(QString::fromLatin1(name));
    Require(found != nullptr, std::string("there is a ") + name);
    return *found;
  }
  std::uint16_t Port() const { return parts_.tcp_server->LocalPort(); }
  /// The value column of the acquired data.
  QStringList Values() const {
    constexpr int kValueColumn = 2;
    const QAbstractItemModel& rows = *Find<QAbstractItemView>("LVdata").model();
    QStringList values;
    for (int row = 0; row < rows.rowCount(); ++row) {
      values.append(rows.index(row, kValueColumn).data().toString());
    }
    return values;
  }

  void Save(const QString& path) const {
    const QDeadlineTimer settled(kSettlingMs);
    WaitUntil([&] { return settled.hasExpired(); }, "time passes");
    for (const auto* box : window_->findChildren<QMessageBox*>()) {
      Require(!box->isVisible(), "no message box says '" + box->text().toStdString() + "'");
    }
    Require(window_->grab().save(path), "the picture can be written");
  }

 private:
  QTemporaryDir folder_;
  platform::PseudoTerminal line_;
  host::ControlParts parts_;
  std::unique_ptr<apps::MainWindow> window_;
};

void Idle(const QString& path) {
  const Scene scene;
  Require(scene.Find<QLabel>("lbStatus").text() == "Status: Idle", "the session is idle");
  scene.Save(path);
}

void WithClient(const QString& path) {
  const Scene scene;
  scene.Find<QCheckBox>("showvalue").setChecked(true);
  scene.Find<QAction>("OpenComm").trigger();
  QProcess client;
  client.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  client.setStandardOutputFile(QProcess::nullDevice());
  client.start(QCoreApplication::arguments().at(2),
               {"--port", QString::number(scene.Port()), "watch", "--file", "engine.xml", "--section",
                "ENGINE", "--interval", "200", "Speed", "Coolant", "Throttle", "Battery", "Torque", "Lambda",
                "Oil", "Manifold", "Load", "Rail"});
  Require(client.waitForStarted(), "the client starts");
  const auto wait_until = [&client](const std::function<bool()>& done, const std::string& what) {
    WaitUntil(
        [&] {
          Require(client.state() == QProcess::Running, "the client stays connected");
          return done();
        },
        what);
  };
  wait_until([&] { return scene.Values().size() == 10 && !scene.Values().contains(QString()); },
             "the acquired data have values");
  const QStringList first_look = scene.Values();
  wait_until([&] { return scene.Values() != first_look; }, "values change between two looks");
  wait_until([&] { return scene.Find<QLabel>("ConnectTime").text() > "00:00:00 "; }, "the clock counts");
  Require(scene.Find<QLabel>("lbStatus").text() == "Status: Select File", "a file is selected");
  Require(scene.Find<QWidget>("imgConnected").isVisible(), "the serial line is open");
  scene.Save(path);
  // It takes its leave of the server, which answers in the events here.
  client.terminate();
  WaitUntil([&] { return client.state() == QProcess::NotRunning; }, "the client ends");
}

void Panel(const QString& path) {
  const Scene scene;
  scene.Find<QAction>("Properties").trigger();
  Require(scene.Find<QWidget>("ConfigComPort1").isVisible(), "the settings panel is in front");
  scene.Save(path);
}

void RedLabel(const QString& path) {
  const Scene scene(kUnpluggedInterface);
  Require(scene.Find<ui::PortLabelBox>("lbPort").ForeColour() == diag::PortLabel::kRed,
          "the port label is red");
  scene.Save(path);
}

QPalette DarkPalette() {
  const QColor window(0x2B, 0x2B, 0x2B);
  QPalette palette(window);
  palette.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
  palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x26));
  palette.setColor(QPalette::Highlight, QColor(0x2F, 0x65, 0xCA));
  return palette;
}

bool Take(void (*picture)(const QString&), const QString& path) {
  try {
    picture(path);
  } catch (const std::runtime_error& failure) {
    std::fprintf(stderr, "takescreenshots: %s: %s\n", qPrintable(path), failure.what());
    return false;
  }
  std::printf("%s\n", qPrintable(path));
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  if (argc != 4) {
    std::fprintf(stderr, "usage: takescreenshots FOLDER ASAP3 EXAMPLES\n");
    return 2;
  }
  QApplication::setWindowIcon(ui::PictureIcon(ui::Picture::kServer));
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  const QDir folder(QString::fromLocal8Bit(argv[1]));
  bool taken = Take(Idle, folder.filePath("idle.png"));
  taken = Take(WithClient, folder.filePath("client.png")) && taken;
  taken = Take(Panel, folder.filePath("settings.png")) && taken;
  taken = Take(RedLabel, folder.filePath("port-missing.png")) && taken;
  QApplication::setPalette(DarkPalette());
  taken = Take(WithClient, folder.filePath("client-dark.png")) && taken;
  taken = Take(Panel, folder.filePath("settings-dark.png")) && taken;
  return taken ? 0 : 1;
}
