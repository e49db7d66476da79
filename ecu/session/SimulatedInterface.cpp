// SPDX-License-Identifier: MIT
#include "ecu/session/SimulatedInterface.h"

#include <utility>

#include "ecu/simulation/SimulatedLink.h"

namespace korval::ecu {

SimulatedInterface::SimulatedInterface(std::shared_ptr<base::EventLoop> loop, FrameRecorder recorder)
    : loop_(std::move(loop)), recorder_(std::move(recorder)) {}

std::unique_ptr<MessageLink> SimulatedInterface::LinkTo(std::shared_ptr<const EcuDescription> ecu) {
  std::shared_ptr<SimulatedEcu>& simulated = ecus_[ecu];
  if (!simulated) simulated = std::make_shared<SimulatedEcu>(ecu, loop_->Now());
  return std::make_unique<SimulatedLink>(loop_, simulated);
}

base::Task<void> SimulatedInterface::SendFrames(std::vector<FrameToSend> frames) {
  if (!recorder_) co_return;
  for (const FrameToSend& frame : frames) recorder_(frame.identifier, frame.data.View());
}

}  // namespace korval::ecu
