// SPDX-License-Identifier: MIT
#include "HeadlessServer.h"

#include <cstdio>

#include <QCoreApplication>

#include "HeadlessConsole.h"
#include "StopSignals.h"
#include "base/Failure.h"
#include "host/trace/TextTerminal.h"

namespace korval::apps {

HeadlessServer::HeadlessServer(const Options& options) {
  host::ControlParts parts;
  parts.terminal = std::make_shared<host::TextTerminal>(WriteTrace);
  parts.status = std::make_shared<UnseenStatus>();
  parts.files = std::make_shared<UnseenList>();
  parts.data = std::make_shared<UnseenList>();
  parts.message_box = std::make_shared<StderrMessageBox>();
  assembly_ = std::make_unique<ControlAssembly>(options, std::move(parts));
}

int HeadlessServer::Run() {
  const StopSignals stop([this] {
    assembly_->Control().Terminate();
    QCoreApplication::quit();
  });
  try {
    if (!assembly_->Start()) return 1;
  } catch (const base::Failure& failure) {
    std::fprintf(stderr, "korval-asap-server: %s\n", failure.what());
    return 1;
  }
  return QCoreApplication::exec();
}

}  // namespace korval::apps
