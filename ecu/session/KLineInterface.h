// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/EventLoop.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/kline/SharedKLine.h"
#include "ecu/session/DiagnosticInterface.h"

namespace korval::ecu {

/// A serial port: one K-line for any number of ECU functions.
class KLineInterface : public DiagnosticInterface {
 public:
  using Note = std::function<void(const std::string&)>;

  /// `line` as KLinePorts gives it. `note` may be empty.
  KLineInterface(std::shared_ptr<base::EventLoop> loop, std::string port, std::shared_ptr<SharedKLine> line,
                 std::shared_ptr<const ErrorTable> errors, Note note);

  /// Raises 1002 for a function that is diagnosed on CAN.
  std::unique_ptr<MessageLink> LinkTo(std::shared_ptr<const EcuDescription> ecu) override;
  /// Raises 1001: there is no CAN bus.
  void SendFrames(const std::vector<FrameToSend>& frames) override;
  /// Waits for the last stopCommunication.
  void Leave() override;

 private:
  std::shared_ptr<base::EventLoop> loop_;
  std::string port_;
  std::shared_ptr<const ErrorTable> errors_;
  std::shared_ptr<SharedKLine> line_;
  Note note_;
};

}  // namespace korval::ecu
