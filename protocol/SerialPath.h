// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>

#include "base/EventLoop.h"
#include "base/Job.h"
#include "host/trace/StatusView.h"
#include "host/trace/TraceConsole.h"
#include "protocol/CommandRunner.h"
#include "protocol/SerialPort.h"
#include "protocol/TcpPath.h"

namespace korval::protocol {

/// The RS232 transport: frames may arrive in pieces, and a watchdog drops one that stalls. It has no busy
/// guard and no reply suppression, and a power request over it closes a host's own session too.
class SerialPath {
 public:
  /// Told of each change of the port: open or closed. It runs the connection clock.
  using OnToggled = std::function<void(bool open)>;

  /// Silence after which an incomplete frame is dropped.
  static constexpr std::chrono::milliseconds kWatchdogInterval{1000};
  /// Commands that may be under way at a time; without a bound a noisy line could fill the memory.
  static constexpr std::size_t kMostCommands = 8;

  /// The arguments outlive the path.
  SerialPath(SerialPort& port, CommandRunner& runner, TcpPath& tcp, host::TraceConsole& console,
             host::StatusView& view, base::EventLoop& loop, OnToggled on_toggled);

  /// As TcpPath::Bind.
  void Bind(const std::weak_ptr<void>& owner);

  /// Opens the port when it is closed, closes it when it is open. A failure leaves the port as it is and
  /// is traced.
  void Toggle();
  /// Opens the port where it is closed, and says whether it is open. A failure that is the same as the last
  /// time is not traced again.
  bool OpenAgain();
  /// Raises Failure.
  void Close();

 private:
  void Change(bool open);
  void OnComm(CommEvent event);
  void OnLost();
  void OnReceive();
  void Serve();
  base::Task<void> Answer();
  void ArmWatchdog();
  void StopWatchdog();
  void OnWatchdog();
  void ShowSettings();

  SerialPort& port_;
  CommandRunner& runner_;
  TcpPath& tcp_;
  host::TraceConsole& console_;
  host::StatusView& view_;
  OnToggled on_toggled_;
  std::weak_ptr<void> owner_;
  base::EventLoop& loop_;
  std::unique_ptr<base::Deadline> watchdog_;
  std::list<base::Job> commands_;
  std::string failure_;  // of the last change
  int opening_ = 0;      // counts the changes of the port
};

}  // namespace korval::protocol
