// SPDX-License-Identifier: MIT
#include "HeadlessServer.h"

#include <cerrno>

#include <QCoreApplication>

#include "ControlAssembly.h"
#include "base/Failure.h"
#include "host/trace/TextTerminal.h"
#include "platform/process/RunWhile.h"
#include "platform/process/StopSignals.h"

namespace korval::apps {
namespace {

constexpr int kStartFailed = 1;
constexpr int kOutputLost = 4;

}  // namespace

HeadlessServer::HeadlessServer(const ServerOptions& options)
    : debug_(options.debug),
      console_(
          std::make_shared<HeadlessConsole>([this](std::error_code failure) { OnOutputLost(failure); })) {
  host::ControlParts parts;
  parts.terminal = std::make_shared<host::TextTerminal>(
      [console = console_](std::string_view text) { console->Trace(text); });
  parts.status = std::make_shared<UnseenStatus>();
  parts.files = std::make_shared<UnseenList>();
  parts.data = std::make_shared<UnseenList>();
  parts.port_label = std::make_shared<UnseenPortLabel>();
  parts.message_box = std::make_shared<StderrMessageBox>(console_);
  parts_ = CompleteParts(options, std::move(parts));
  control_ = host::ServerControl::Create(parts_);
}

int HeadlessServer::Run() {
  const platform::StopSignals stop([this] { Stop(); });
  try {
    Start();
  } catch (const base::Failure& failure) {
    console_->Error(std::string("korval-asap-server: ") + failure.what());
    return Finish(kStartFailed);
  }
  return Finish(QCoreApplication::exec());
}

void HeadlessServer::Start() {
  if (!control_->Initialise()) {
    console_->Error(
        "korval-asap-server: the serial line stays closed, and no setting stored behind that one is in "
        "force; "
        "correct it, or give --serial-settings and --handshaking");
  }
  ChooseDiagnosticPort(parts_);
  control_->Console().SetDebugTrace(debug_);
  control_->Show();
  control_->KeepSerialPortOpen();
}

void HeadlessServer::Stop() {
  control_->Terminate();
  QCoreApplication::quit();
}

// On the console's own thread.
void HeadlessServer::OnOutputLost(std::error_code failure) {
  output_error_ = failure.value();
  QMetaObject::invokeMethod(
      QCoreApplication::instance(), [this] { Stop(); }, Qt::QueuedConnection);
}

int HeadlessServer::Finish(int status) {
  control_->Terminate();
  platform::RunWhile(parts_.is_taking_leave);
  console_->FinishTrace();
  const std::error_code failure(output_error_, std::generic_category());
  if (!failure || status != 0) return status;
  // A reader that has gone knows why.
  if (failure.value() != EPIPE) {
    console_->Error("korval-asap-server: the trace cannot be written to standard output (" +
                    failure.message() +
                    "), so the server ends: give it a file on a disk with room, or /dev/null");
  }
  return kOutputLost;
}

}  // namespace korval::apps
