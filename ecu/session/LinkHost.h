// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ecu/can/CyclicFrames.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/description/MessagingFile.h"
#include "ecu/service/ServiceChannel.h"
#include "ecu/session/DiagnosticInterface.h"
#include "ecu/session/SessionFactory.h"

namespace korval::ecu {

/// What the objects of one session share, and keep when the session is gone: the diagnostic interface with
/// the channels on it, and the error texts.
class LinkHost {
 public:
  explicit LinkHost(SessionEnvironment environment);

  const std::string& Port() const { return port_; }
  /// Leaves the interface in use and opens the one on `port`. Raises 1001 or 1002; "" raises nothing when it
  /// ends an interface that was in use.
  void Open(const std::string& port);
  /// Ends every channel, and with them the waits that are under way.
  void Close();

  /// These raise 1001 when no interface was opened, 1000 when it was closed. Functions of the same ECU are
  /// given the same channel.
  std::shared_ptr<ServiceChannel> OpenChannel(const std::shared_ptr<const EcuDescription>& ecu);
  base::Task<void> SendFrames(std::vector<FrameToSend> frames);

  /// Identifiers and bit rate of the CAN bus, now and of every interface opened later.
  void UseMessaging(std::shared_ptr<const MessagingFile> messaging);
  /// What the bus says by itself.
  CyclicFrames& Frames() { return *frames_; }
  const std::shared_ptr<base::EventLoop>& Loop() const { return environment_.loop; }
  /// Something worth showing that is no failure.
  void Note(const std::string& text) const;

  ErrorTable& Errors() { return *errors_; }
  std::shared_ptr<const ErrorTable> SharedErrors() const { return errors_; }

 private:
  struct OpenedChannel {
    std::string ecu;  // "": shared by nobody
    std::weak_ptr<ServiceChannel> channel;
  };

  DiagnosticInterface& RequireInterface();

  SessionEnvironment environment_;
  std::string port_;
  std::shared_ptr<ErrorTable> errors_ = std::make_shared<ErrorTable>();
  std::shared_ptr<CyclicFrames> frames_;
  std::shared_ptr<const MessagingFile> messaging_ = std::make_shared<const MessagingFile>();
  bool was_open_ = false;
  std::unique_ptr<DiagnosticInterface> interface_;
  std::vector<OpenedChannel> channels_;
};

}  // namespace korval::ecu
