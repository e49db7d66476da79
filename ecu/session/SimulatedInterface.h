// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>

#include "base/EventLoop.h"
#include "ecu/session/DiagnosticInterface.h"
#include "ecu/simulation/SimulatedEcu.h"

namespace korval::ecu {

/// The port SIM. The ECUs keep what was written to them as long as the interface stays open; CAN frames go
/// to a recorder.
class SimulatedInterface : public DiagnosticInterface {
 public:
  using FrameRecorder = std::function<void(std::int32_t identifier, base::ByteView data)>;

  SimulatedInterface(std::shared_ptr<base::EventLoop> loop, FrameRecorder recorder);

  std::unique_ptr<MessageLink> LinkTo(std::shared_ptr<const EcuDescription> ecu) override;
  base::Task<void> SendFrames(std::vector<FrameToSend> frames) override;

 private:
  std::shared_ptr<base::EventLoop> loop_;
  FrameRecorder recorder_;
  std::map<std::shared_ptr<const EcuDescription>, std::shared_ptr<SimulatedEcu>> ecus_;
};

}  // namespace korval::ecu
