// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/Job.h"
#include "base/Task.h"
#include "diag/DiagnosisObject.h"
#include "diag/InterfaceSelection.h"
#include "diag/WindowsScript.h"
#include "host/control/ConnectionClock.h"
#include "host/control/ControlParts.h"
#include "host/control/ManualReads.h"
#include "host/power/PowerControl.h"
#include "host/settings/HostSettings.h"
#include "host/settings/InstallationInformation.h"
#include "host/settings/ServerSettings.h"
#include "host/trace/TraceConsole.h"
#include "model/Acquisition.h"
#include "model/Folders.h"
#include "model/KorvAsapFiles.h"
#include "model/KorvAsapValues.h"
#include "model/OnlineValues.h"
#include "model/SelectFile.h"
#include "model/SetAcquisition.h"
#include "parameters/ExtendedParameter.h"
#include "parameters/GetSetParameter.h"
#include "protocol/CommandRunner.h"
#include "protocol/Dispatcher.h"
#include "protocol/SerialPath.h"
#include "protocol/SessionState.h"
#include "protocol/TcpPath.h"

namespace korval::host {

/// The control's logic, without a window: start-up, show, reset and termination, and the wiring of
/// everything below. Create it, then Initialise, then Show; Terminate before letting it go. It lives on
/// the event loop's thread and may be let go inside any of its own events.
class ServerControl : private protocol::SessionServices {
 public:
  static std::shared_ptr<ServerControl> Create(ControlParts parts);
  ~ServerControl() override;
  ServerControl(const ServerControl&) = delete;
  ServerControl& operator=(const ServerControl&) = delete;

  /// How often KeepSerialPortOpen looks.
  static constexpr std::chrono::milliseconds kSerialInterval{2000};

  /// Reads the settings and traces the banner. False when the serial port refuses its settings; the
  /// person at the console has then been told, what is stored behind them is not read, and the serial port
  /// stays closed. Show listens all the same.
  bool Initialise();
  /// Selects the diagnostic interface and opens the transports. Raises Failure when the TCP port cannot be
  /// opened; the serial port is served all the same.
  void Show();
  /// For where nobody is at the console to open the serial port: one that is opened at the start is opened as
  /// soon as its device is there, and again when it comes back.
  void KeepSerialPortOpen();
  /// Closes and reopens both transports, ends the client's session and releases the diagnosis object unless
  /// it is the host's own. Asked for again while the session is being closed, it does nothing more.
  void ResetAll();
  /// Closes everything. Commands that wait end with a Failure and answer nobody.
  void Terminate() noexcept;

  // What a person does on the console.

  /// Opens the serial port when it is closed, closes it when it is open.
  /// Does nothing while the settings are edited, whose answer reopens the ports.
  void ToggleSerialPort();
  /// Closes the transports and shows the settings panel; refused while the serial port is open, and nothing
  /// happens while it is shown already or a Reset All closes the session.
  void EditProperties();
  /// The panel's answer: takes its values over unless cancelled, and in both cases runs Reset All.
  void TakePanelResult(bool cancelled);
  void ReadData() { manual_reads_.ReadData(); }
  void ReadIdent() { manual_reads_.ReadIdent(); }
  /// Whether get online value shows its values in `LVdata` too.
  void SetShowValue(bool on) { online_values_.SetShowValue(on); }
  /// Reconciles the stored choice of diagnostic interface with what is plugged in.
  void SelectDiagInterface();

  TraceConsole& Console() { return console_; }
  const std::shared_ptr<base::EventLoop>& Loop() const { return parts_.loop; }
  /// The diagnostic session; one that is set is used but never closed.
  std::shared_ptr<viator3::Session> Session() const { return diagnosis_.Session(); }
  void SetSession(std::shared_ptr<viator3::Session> session) { diagnosis_.SetSession(std::move(session)); }
  /// Reads the host application's installation record again.
  void QORGetInstallationInformation();

 private:
  explicit ServerControl(ControlParts parts);
  void Bind(const std::shared_ptr<ServerControl>& self);
  bool ApplySettings();
  base::Task<void> Reset();
  void WatchDevices();
  PanelValues CurrentValues() const;
  void TakeValues(const PanelValues& values);
  void SetAccess(const std::string& listen, const std::string& allow);
  void CloseTransports();
  void OpenSerialPort();
  void LookAfterSerialPort();
  void DropCollections();
  void EndClientSession();

  base::Task<bool> CreateDiagnosisObject(base::ByteBuffer& reply) override;
  void ClearAcquiredDataView() override;
  void EndSession() override;
  bool ReleaseForPowerRequest(bool close_host_session) override;

  std::weak_ptr<ServerControl> self_;
  ControlParts parts_;
  TraceConsole console_;
  std::uint16_t tcp_port_ = ServerSettings::kDefaultTcpPort;
  std::string listen_;
  std::string allow_;
  bool open_serial_at_start_ = false;
  bool editing_ = false;
  bool terminated_ = false;
  base::Job reset_;
  bool serial_port_awaited_ = false;
  InstallationInformation installation_;
  HostSettings host_settings_;
  PowerControl power_;
  model::Folders folders_;
  model::KorvAsapFiles asap_files_;
  model::KorvAsapValues asap_values_;
  model::Acquisition acquisition_;
  diag::DiagnosisObject diagnosis_;
  diag::WindowsScript script_;
  std::optional<diag::InterfaceSelection> interface_selection_;
  protocol::SessionState state_;
  protocol::Dispatcher dispatcher_;
  protocol::CommandRunner runner_;
  model::SelectFile select_file_;
  model::SetAcquisition set_acquisition_;
  model::OnlineValues online_values_;
  parameters::GetSetParameter get_set_;
  parameters::ExtendedParameter extended_;
  ManualReads manual_reads_;
  ConnectionClock clock_;
  protocol::TcpPath tcp_path_;
  protocol::SerialPath serial_path_;
  std::unique_ptr<base::Timer> serial_timer_;
};

}  // namespace korval::host
