// SPDX-License-Identifier: MIT
#include "ecu/session/KLineInterface.h"

#include <utility>

#include "base/Errand.h"
#include "base/Failure.h"
#include "ecu/description/ErrorNumbers.h"
#include "ecu/kline/KLineLink.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"

namespace korval::ecu {
namespace {

constexpr std::chrono::seconds kLongestFarewell{1};

}  // namespace

KLineInterface::KLineInterface(std::shared_ptr<base::EventLoop> loop, std::string port,
                               std::shared_ptr<SharedKLine> line, std::shared_ptr<const ErrorTable> errors,
                               Note note)
    : loop_(std::move(loop)),
      port_(std::move(port)),
      errors_(std::move(errors)),
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

void KLineInterface::SendFrames(const std::vector<FrameToSend>& /*frames*/) {
  throw errors_->MakeFailure(kNoInterface, port_ + " is a K-line; a CAN frame needs a CAN port");
}

void KLineInterface::Leave() {
  const base::Errand farewell;  // which nobody calls off
  loop_->RunUntil(loop_->Now() + kLongestFarewell, [line = line_] { return line->IsFree(); });
}

}  // namespace korval::ecu
