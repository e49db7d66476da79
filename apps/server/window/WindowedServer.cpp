// SPDX-License-Identifier: MIT
#include "window/WindowedServer.h"

#include <cstdio>
#include <utility>

#include <QApplication>
#include <QCheckBox>

#include "ControlAssembly.h"
#include "host/settings/ServerSettings.h"
#include "host/trace/TraceConsole.h"
#include "platform/process/RunWhile.h"
#include "platform/process/StopSignals.h"
#include "window/SharedFolder.h"

namespace korval::apps {
namespace {

using StandIns = host::OverrideSettings::Overrides;

// The first look shall show something that works.
StandIns ExampleSettings() {
  const std::string folder = SharedFolder(QCoreApplication::applicationDirPath(), "examples").toStdString();
  if (folder.empty()) return {};
  return {{host::PropertyPath("AsapFolder"), folder + "/asap"},
          {host::PropertyPath("KorvFolder"), folder + "/ecu"}};
}

}  // namespace

WindowedServer::WindowedServer(const ServerOptions& options) {
  const StandIns examples = ExampleSettings();
  auto* control = new ui::KorvAsapServer(
      [&](host::ControlParts views) { return parts_ = CompleteParts(options, std::move(views), examples); });
  ChooseDiagnosticPort(parts_);
  for (const auto& [path, folder] : examples) {
    if (parts_.settings->Read(path) == folder)
      TraceLine("No folder chosen yet: using the examples in " + folder);
  }
  if (options.debug) control->findChild<QCheckBox*>("Check1")->setChecked(true);
  window_.emplace(control, parts_.settings, [] { return platform::ScanInterfaces(); });
  QObject::connect(&*window_, &MainWindow::InterfaceChosen, [this](const QString& text) {
    TraceLine("Diagnostic interface chosen: " + text.toStdString() + " (from the client's next init on)");
  });
  QObject::connect(control, &ui::KorvAsapServer::ShowFailed,
                   [this](const QString& description) { OnShowFailed(description); });
}

void WindowedServer::TraceLine(const std::string& text) { host::TraceConsole(*parts_.terminal).Line(text); }

void WindowedServer::OnShowFailed(const QString& description) {
  std::fprintf(stderr, "korval-asap-server: %s\n", qPrintable(description));
  status_ = 1;
}

int WindowedServer::Run() {
  const platform::StopSignals stop([this] { window_->close(); });
  window_->show();
  QApplication::exec();
  window_.reset();
  platform::RunWhile(parts_.is_taking_leave);
  return status_;
}

}  // namespace korval::apps
