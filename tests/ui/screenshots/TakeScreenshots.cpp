// SPDX-License-Identifier: MIT
// Takes pictures of the server's window: takescreenshots FOLDER ASAP3 EXAMPLES (the client program, the
// examples' folder). Everything runs on loopback, on settings of its own, and no power request is ever sent.
#include <cstdio>
#include <functional>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStyleFactory>
#include <QTemporaryDir>

#include "ControlAssembly.h"
#include "PseudoTerminal.h"
#include "host/settings/ServerSettings.h"
#include "platform/PluggedInterface.h"
#include "ui/Pictures.h"
#include "window/MainWindow.h"

namespace {

using namespace korval;  // NOLINT(google-build-using-namespace): a program's own file

constexpr std::uint16_t kPort = 5001;
constexpr char kUnpluggedInterface[] = "[QOR]\nGeneral\\CommPort=NONE\nHardware\\InstanceName=KD-20417\n";

// The server's window on settings of its own.
class Scene {
 public:
  explicit Scene(const char* settings = "") {
    QFile file(folder_.filePath("user.ini"));
    if (file.open(QIODevice::WriteOnly)) file.write(settings);
    file.close();
    apps::Options options;
    options.serial_device = line_.Device();
    options.listen_address = QHostAddress(QHostAddress::LocalHost);
    options.tcp_port = kPort;
    options.dry_run_power = true;
    options.settings_file = folder_.filePath("user.ini").toStdString();
    options.install_record_file = folder_.filePath("machine.ini").toStdString();
    const std::string examples = QCoreApplication::arguments().at(3).toStdString();
    options.asap_folder = examples + "/asap";
    options.korv_folder = examples + "/ecu";
    if (*settings == '\0') options.diag_port = "SIM";
    auto* control = new ui::KorvAsapServer([&](host::ControlParts views) {
      parts_ = apps::CompleteParts(options, std::move(views));
      return parts_;
    });
    window_ = std::make_unique<apps::MainWindow>(control, parts_.settings,
                                                 [] { return platform::ScanInterfaces(); });
    window_->show();
    Run(300);
  }

  template <typename Widget>
  Widget* Find(const char* name) const {
    return window_->findChild<Widget*>(QString::fromLatin1(name));
  }
  std::uint16_t Port() const { return parts_.tcp_server->LocalPort(); }

  static void Run(int milliseconds) {
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < milliseconds;)
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
  }

  bool Save(const QString& path) const {
    const bool saved = window_->grab().save(path);
    std::printf("%s%s\n", qPrintable(path), saved ? "" : " could not be written");
    return saved;
  }

 private:
  QTemporaryDir folder_;
  platform::PseudoTerminal line_;
  host::ControlParts parts_;
  std::unique_ptr<apps::MainWindow> window_;
};

bool Idle(const QString& path) { return Scene().Save(path); }

bool WithClient(const QString& path, const QString& client_program) {
  const Scene scene;
  scene.Find<QCheckBox>("showvalue")->setChecked(true);
  scene.Find<QAction>("OpenComm")->trigger();
  QProcess client;
  client.setStandardOutputFile(QProcess::nullDevice());
  client.start(client_program, {"--port", QString::number(scene.Port()), "watch", "--file", "engine.xml",
                                "--section", "ENGINE", "--interval", "200", "Speed", "Coolant", "Throttle",
                                "Battery", "Torque", "Lambda", "Oil", "Manifold", "Load", "Rail"});
  Scene::Run(3000);
  const bool saved = scene.Save(path);
  client.terminate();
  client.waitForFinished();
  return saved;
}

bool Panel(const QString& path) {
  const Scene scene;
  scene.Find<QAction>("Properties")->trigger();
  Scene::Run(300);
  return scene.Save(path);
}

bool RedLabel(const QString& path) { return Scene(kUnpluggedInterface).Save(path); }

QPalette DarkPalette() {
  const QColor window(0x2B, 0x2B, 0x2B);
  QPalette palette(window);
  palette.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
  palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x26));
  palette.setColor(QPalette::Highlight, QColor(0x2F, 0x65, 0xCA));
  return palette;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  if (argc != 4) {
    std::fprintf(stderr, "usage: takescreenshots FOLDER ASAP3 EXAMPLES\n");
    return 2;
  }
  QApplication::setWindowIcon(ui::PictureIcon(ui::Picture::kServer));
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  const QDir folder(QString::fromLocal8Bit(argv[1]));
  const QString client = QString::fromLocal8Bit(argv[2]);
  bool saved = Idle(folder.filePath("idle.png"));
  saved = WithClient(folder.filePath("client.png"), client) && saved;
  saved = Panel(folder.filePath("settings.png")) && saved;
  saved = RedLabel(folder.filePath("port-missing.png")) && saved;
  QApplication::setPalette(DarkPalette());
  saved = WithClient(folder.filePath("client-dark.png"), client) && saved;
  saved = Panel(folder.filePath("settings-dark.png")) && saved;
  return saved ? 0 : 1;
}
