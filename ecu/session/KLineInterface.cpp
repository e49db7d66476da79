// SPDX-License-Identifier: MIT
#include "ecu/session/KLineInterface.h"

#include <utility>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/kline/KLineLink.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"

namespace korval::ecu {

KLineInterface::KLineInterface(std::shared_ptr<base::EventLoop> loop, std::string port,
                               std::shared_ptr<KLinePorts> ports, std::shared_ptr<SharedKLine> line,
                               std::shared_ptr<const ErrorTable> errors, Note note)
    : loop_(std::move(loop)),
      port_(std::move(port)),
      errors_(std::move(errors)),
      ports_(std::move(ports)),
      line_(std::move(line)),
      note_(std::move(note)) {}

std::unique_ptr<MessageLink> KLineInterface::LinkTo(std::shared_ptr<const EcuDescription> ecu) {
  const FunctionDescription& function = ecu->Function();
  if (function.protocol == "DiagOnCAN") {
    throw errors_->MakeFailure(kInterfaceRefused, function.name + " is diagnosed on CAN, and " + port_ +
                                                      " is a K-line; choose a CAN port");
  }
  return std::make_unique<KLineLink>(loop_, line_->shared_from_this(), function, Kwp2000(), note_);
}

base::Task<void> KLineInterface::SendFrames(std::vector<FrameToSend> /*frames*/) {
  throw errors_->MakeFailure(kNoInterface, port_ + " is a K-line; a CAN frame needs a CAN port");
  co_return;
}

}  // namespace korval::ecu
