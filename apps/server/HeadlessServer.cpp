// SPDX-License-Identifier: MIT
#include "HeadlessServer.h"

#include <cstdio>

#include <QCoreApplication>

#include "ControlAssembly.h"
#include "HeadlessConsole.h"
#include "base/Failure.h"
#include "host/trace/TextTerminal.h"
#include "platform/process/StopSignals.h"

namespace korval::apps {

HeadlessServer::HeadlessServer(const Options& options) : debug_(options.debug) {
  host::ControlParts parts;
  parts.terminal = std::make_shared<host::TextTerminal>(WriteTrace);
  parts.status = std::make_shared<UnseenStatus>();
  parts.files = std::make_shared<UnseenList>();
  parts.data = std::make_shared<UnseenList>();
  parts.port_label = std::make_shared<UnseenPortLabel>();
  parts.message_box = std::make_shared<StderrMessageBox>();
  parts_ = CompleteParts(options, std::move(parts));
  control_ = host::ServerControl::Create(parts_);
}

int HeadlessServer::Run() {
  const platform::StopSignals stop([this] {
    control_->Terminate();
    QCoreApplication::quit();
  });
  try {
    if (!Start()) return 1;
  } catch (const base::Failure& failure) {
    std::fprintf(stderr, "korval-asap-server: %s\n", failure.what());
    return 1;
  }
  return QCoreApplication::exec();
}

bool HeadlessServer::Start() {
  if (!control_->Initialise()) return false;
  ChooseDiagnosticPort(parts_);
  control_->Console().SetDebugTrace(debug_);
  control_->Show();
  return true;
}

}  // namespace korval::apps
