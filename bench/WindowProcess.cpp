// SPDX-License-Identifier: MIT
#include "bench/WindowProcess.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <QApplication>
#include <QCheckBox>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/system/FreePort.h"
#include "window/WindowedServer.h"

namespace korval::bench {
namespace {

int Serve(const apps::ServerOptions& options) {
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  int argument_count = 1;
  char name[] = "windowtrip";
  char* arguments[] = {name, nullptr};
  const QApplication application(argument_count, arguments);
  apps::WindowedServer server(options);
  server.Window().findChild<QCheckBox*>("showvalue")->setChecked(true);
  return server.Run();
}

}  // namespace

WindowProcess::WindowProcess(const std::string& asap_folder, const std::string& korv_folder)
    : port_(tests::FreePort()), process_(::fork()) {
  if (process_ < 0) throw std::runtime_error("no process");
  if (process_ == 0) {
    apps::ServerOptions options;
    options.listen = "127.0.0.1";
    options.tcp_port = static_cast<std::uint16_t>(port_);
    options.dry_run_power = true;
    options.diag_port = "SIM";
    options.asap_folder = asap_folder;
    options.korv_folder = korv_folder;
    options.settings_file = home_.Path("settings.ini");
    options.install_record_file = home_.Path("record.ini");
    std::_Exit(Serve(options));
  }
  tests::WaitForListener(port_);
}

WindowProcess::~WindowProcess() {
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

}  // namespace korval::bench
