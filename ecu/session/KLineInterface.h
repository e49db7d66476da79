// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/EventLoop.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/kline/KLinePorts.h"
#include "ecu/kline/SharedKLine.h"
#include "ecu/session/DiagnosticInterface.h"

namespace korval::ecu {

/// A serial port: one K-line for any number of ECU functions.
class KLineInterface : public DiagnosticInterface {
 public:
  using Note = std::function<void(const std::string&)>;

  /// `line` as `ports` gives it. `note` may be empty.
  KLineInterface(std::shared_ptr<base::EventLoop> loop, std::string port, std::shared_ptr<KLinePorts> ports,
                 std::shared_ptr<SharedKLine> line, std::shared_ptr<const ErrorTable> errors, Note note);
  /// What still has to go out on the line goes by itself.
  ~KLineInterface() override { ports_->TakeLeave(loop_, std::move(line_)); }

  /// Raises 1002 for a function that is diagnosed on CAN.
  std::unique_ptr<MessageLink> LinkTo(std::shared_ptr<const EcuDescription> ecu) override;
  /// Raises 1001: there is no CAN bus.
  base::Task<void> SendFrames(std::vector<FrameToSend> frames) override;

 private:
  std::shared_ptr<base::EventLoop> loop_;
  std::string port_;
  std::shared_ptr<const ErrorTable> errors_;
  std::shared_ptr<KLinePorts> ports_;
  std::shared_ptr<SharedKLine> line_;
  Note note_;
};

}  // namespace korval::ecu
