// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "diag/viator3.h"
#include "fuzz/CheckedSerialPort.h"
#include "fuzz/CheckedTcpSocket.h"
#include "fuzz/SessionStatus.h"
#include "host/control/ServerControl.h"
#include "tests/support/CallLog.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::fuzz {

/// The whole server on transports, time and settings in memory, with the session library and its simulated
/// ECU behind it. One client is connected and the serial line is open. Every reply that leaves is checked
/// to be one whole, valid frame.
class FuzzServer {
 public:
  FuzzServer();
  ~FuzzServer();
  FuzzServer(const FuzzServer&) = delete;
  FuzzServer& operator=(const FuzzServer&) = delete;

  /// A request with the length and the checksum that belong to it; parameters that do not fit a frame are
  /// cut.
  static base::ByteBuffer Framed(std::uint16_t code, base::ByteView parameters);

  /// Brings the session over TCP to "file selected" on section `section` of the description file.
  void Select(const std::string& section);
  void SendOverTcp(const base::ByteBuffer& bytes);
  void SendOverSerial(const base::ByteBuffer& bytes);
  void Report(std::uint8_t event);
  void ConnectClient() { socket_->Connect(); }
  void LoseClient();
  void Reset();
  /// Whether frames and commands are traced in full; on at first.
  void SetDebugTrace(bool on) { control_->Console().SetDebugTrace(on); }
  /// Ends the server, also from inside a command's wait.
  void Terminate();

  /// Lets everything that is due within the next `span` happen.
  void Advance(std::chrono::milliseconds span) { loop_->Advance(span); }
  /// What happens `delay` later, in the middle of a wait when one is under way then.
  void Later(std::chrono::milliseconds delay, std::function<void()> event) {
    loop_->At(delay, std::move(event));
  }

  /// Whether the client's session stands at "file selected".
  bool IsFileSelected() const { return status_->IsFileSelected(); }
  /// Whatever came before, a new client gets a session.
  void RequireGoodSession();

 private:
  tests::CallLog log_;
  std::shared_ptr<tests::ManualEventLoop> loop_ = std::make_shared<tests::ManualEventLoop>();
  std::shared_ptr<SessionStatus> status_ = std::make_shared<SessionStatus>();
  std::shared_ptr<CheckedTcpSocket> socket_ = std::make_shared<CheckedTcpSocket>(log_);
  std::shared_ptr<CheckedSerialPort> serial_ = std::make_shared<CheckedSerialPort>(log_);
  std::shared_ptr<host::ServerControl> control_;
};

/// A session of our own library on the simulated ECU.
std::shared_ptr<viator3::Session> SimulatedSession(const std::shared_ptr<base::EventLoop>& loop);

/// A folder that holds the description file "fuzz.xml" with the sections ENGINE, SLOW (answers take 50 ms of
/// model time), FAULTY (READ and the initialisation fail at first, VIN always), ABS and AUTOCAN, and their
/// ECU files. Made once for the process.
const std::string& FuzzFolder();

}  // namespace korval::fuzz
