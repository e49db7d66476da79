// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/EventLoop.h"
#include "ecu/can/SharedCanBus.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/isotp/IsoTpParameters.h"
#include "ecu/session/DiagnosticInterface.h"

namespace korval::ecu {

/// A port CAN:PLUGIN:INTERFACE: one bus for the diagnosis of any number of ECU functions, for the cyclic
/// frames of the function CAN and for single frames.
class CanInterface : public DiagnosticInterface {
 public:
  using OpenBus = std::function<std::unique_ptr<CanBus>(std::int32_t bitrate)>;

  /// Raises what `open` raises.
  CanInterface(std::shared_ptr<base::EventLoop> loop, OpenBus open, std::shared_ptr<const ErrorTable> errors,
               std::shared_ptr<const MessagingFile> messaging);
  ~CanInterface() override;

  /// By the pair of identifiers and target addresses. Raises what LinkTo raises.
  std::string EcuOf(const FunctionDescription& function) const override;
  /// Raises 1002 when neither the ECU file nor the messaging file knows the function's identifiers, or its
  /// addressing is not understood.
  std::unique_ptr<MessageLink> LinkTo(std::shared_ptr<const EcuDescription> ecu) override;
  /// An identifier above 7FF hex, or with its most significant bit set, has 29 bits. Raises 2012 for one that
  /// cannot exist, and then sends nothing; 1000 or 1015 when the bus is or gets lost, or takes no more
  /// frames.
  base::Task<void> SendFrames(std::vector<FrameToSend> frames) override;
  /// Opens the bus anew when its bit rate is another.
  void UseMessaging(const std::shared_ptr<const MessagingFile>& messaging) override;
  void HearFrames(const std::function<void(const CanFrame&)>& on_frame) override;

 private:
  SharedCanBus::Open OpenAt(std::int32_t bitrate) const;
  CanFrame FrameOf(const FrameToSend& frame) const;
  IsoTpParameters ParametersOf(const FunctionDescription& function) const;

  std::shared_ptr<base::EventLoop> loop_;
  OpenBus open_;
  std::shared_ptr<const ErrorTable> errors_;
  std::shared_ptr<const MessagingFile> messaging_;
  std::shared_ptr<SharedCanBus> bus_;
  std::shared_ptr<const SharedCanBus::Listener> listener_;
};

}  // namespace korval::ecu
