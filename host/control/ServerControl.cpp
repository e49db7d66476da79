// SPDX-License-Identifier: MIT
#include "host/control/ServerControl.h"

#include <exception>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "base/NumberText.h"

namespace korval::host {
namespace {

constexpr char kBanner[] = "Korval Asap server V" KORVAL_VERSION;

std::int32_t HandshakingCode(const std::string& text) {
  if (const auto code = base::ReadInteger(text)) return *code;
  throw base::Failure("Handshaking '" + text + "' is no number: 0 none, 1 Xon/Xoff, 2 RTS, 3 Xon/RTS");
}

}  // namespace

std::shared_ptr<ServerControl> ServerControl::Create(ControlParts parts) {
  std::shared_ptr<ServerControl> control(new ServerControl(std::move(parts)));
  control->Bind(control);
  return control;
}

ServerControl::ServerControl(ControlParts parts)
    : parts_(std::move(parts)),
      console_(*parts_.terminal),
      host_settings_(*parts_.settings),
      power_(*parts_.power, *parts_.message_box),
      asap_files_(folders_),
      diagnosis_(console_, parts_.create_session, [this] { DropCollections(); }),
      script_(diagnosis_),
      state_(*parts_.status),
      dispatcher_(console_, state_, *this),
      runner_(dispatcher_, state_, *this, console_, power_),
      select_file_(console_, diagnosis_, asap_files_, *parts_.files,
                   [this] { state_.Set(protocol::SessionState::State::kFileSelected); }),
      set_acquisition_(console_, diagnosis_, asap_files_, asap_values_, acquisition_, *parts_.data),
      online_values_(console_, diagnosis_, acquisition_, *parts_.data),
      get_set_(console_, asap_files_, script_),
      extended_(console_, diagnosis_, asap_files_, script_, runner_.PendingPowerRequest()),
      manual_reads_(console_, diagnosis_, asap_files_, asap_values_, acquisition_, *parts_.files,
                    *parts_.data),
      clock_(*parts_.loop, *parts_.status),
      tcp_path_(*parts_.tcp_server, runner_, state_, *this, console_, *parts_.loop),
      serial_path_(*parts_.serial_port, runner_, tcp_path_, console_, *parts_.status, *parts_.loop,
                   [this](bool open) { open ? clock_.Start() : clock_.Stop(); }) {
  if (parts_.port_scout && parts_.port_label) {
    interface_selection_.emplace(console_, host_settings_, *parts_.port_scout, *parts_.port_label,
                                 diagnosis_);
  }
  select_file_.AttachTo(dispatcher_);
  set_acquisition_.AttachTo(dispatcher_);
  online_values_.AttachTo(dispatcher_);
  get_set_.AttachTo(dispatcher_);
  extended_.AttachTo(dispatcher_);
}

ServerControl::~ServerControl() { Terminate(); }

void ServerControl::Bind(const std::shared_ptr<ServerControl>& self) {
  self_ = self;
  clock_.Bind(self);
  tcp_path_.Bind(self);
  serial_path_.Bind(self);
  reset_.SetOwner(self);
  manual_reads_.Bind(self);
  if (interface_selection_) interface_selection_->Bind(self);
}

bool ServerControl::Initialise() {
  console_.SetDebugTrace(false);
  parts_.terminal->Select(0, parts_.terminal->Length());
  parts_.terminal->ReplaceSelection("");
  parts_.status->ShowConnected(false);
  if (!ApplySettings()) return false;
  state_.Set(protocol::SessionState::State::kIdle);
  console_.Line(kBanner);
  QORGetInstallationInformation();
  return true;
}

bool ServerControl::ApplySettings() {
  const ServerSettings stored = ReadServerSettings(*parts_.settings, parts_.application_folder);
  // What is not read because the start ends before it has its default.
  folders_ = {parts_.asap_folder.value_or(parts_.application_folder),
              parts_.korv_folder.value_or(parts_.application_folder)};
  tcp_path_.SetPort(tcp_port_ = parts_.tcp_port.value_or(ServerSettings::kDefaultTcpPort));
  // Before anything may end the start: a port that is opened all the same lets nobody in by that.
  SetAccess(stored.listen, stored.allow);
  protocol::SerialPort& port = *parts_.serial_port;
  try {
    if (!stored.serial_settings.empty()) port.SetSettings(stored.serial_settings);
    if (stored.comm_port) port.SetPortNumber(*stored.comm_port);
    if (!stored.handshaking.empty()) port.SetHandshaking(HandshakingCode(stored.handshaking));
  } catch (const base::Failure& failure) {
    parts_.message_box->Show(failure.Description(), MessageStyle::kExclamation);
    return false;
  }
  folders_ = {stored.asap_folder, stored.korv_folder};
  tcp_path_.SetPort(tcp_port_ = parts_.tcp_port.value_or(stored.tcp_port));
  open_serial_at_start_ = stored.open_serial_at_start;
  return true;
}

void ServerControl::Show() {
  WatchDevices();
  SelectDiagInterface();
  if (terminated_) return;
  std::exception_ptr no_tcp;
  try {
    tcp_path_.StartListening();
  } catch (const base::Failure&) {
    no_tcp = std::current_exception();
  }
  OpenSerialPort();
  if (no_tcp) std::rethrow_exception(no_tcp);
}

void ServerControl::WatchDevices() {
  if (!parts_.port_scout) return;
  parts_.port_scout->SetOnDevicesHaveChanged([watch = self_] {
    if (const auto held = watch.lock()) held->SelectDiagInterface();
  });
}

void ServerControl::SelectDiagInterface() {
  if (interface_selection_) interface_selection_->SelectDiagInterface();
}

void ServerControl::ResetAll() {
  if (!reset_.IsUnderWay()) reset_.Start(Reset());
}

base::Task<void> ServerControl::Reset() {
  console_.Line("Reset All");
  CloseTransports();
  console_.Line("- Reinit diagnostique session");
  EndClientSession();
  // A host's own stays in place; the closing of one that a host made may run events.
  co_await base::Blocking([this] {
    if (!diagnosis_.SessionIsExternal()) diagnosis_.ReleaseDiagnosisObject();
  });
  console_.Line("- Open tcpip server");
  tcp_path_.Reopen();
  OpenSerialPort();
}

void ServerControl::Terminate() noexcept {
  if (std::exchange(terminated_, true)) return;
  if (serial_timer_) serial_timer_->Stop();
  reset_.CallOff();
  manual_reads_.Stop();
  base::IgnoreFailure([this] { CloseTransports(); });
  base::IgnoreFailure([this] { DropCollections(); });
  base::IgnoreFailure([this] {
    if (parts_.port_scout) parts_.port_scout->Shutdown();
  });
  diagnosis_.ReleaseDiagnosisObject();
}

void ServerControl::ToggleSerialPort() {
  if (!editing_) serial_path_.Toggle();
}

void ServerControl::EditProperties() {
  if (!parts_.panel || editing_ || reset_.IsUnderWay()) return;
  if (parts_.serial_port->IsOpen()) {
    parts_.message_box->Show("You can change communicate settings only when communication is off",
                             MessageStyle::kPlain);
    return;
  }
  editing_ = true;
  CloseTransports();
  parts_.panel->SetValue(CurrentValues());
  parts_.panel->SetVisible(true);
}

PanelValues ServerControl::CurrentValues() const {
  const protocol::SerialPort& port = *parts_.serial_port;
  return {port.Settings(),       port.PortNumber(), port.Handshaking(),
          open_serial_at_start_, tcp_port_,         folders_.asap,
          folders_.korv,         listen_,           allow_};
}

void ServerControl::TakePanelResult(bool cancelled) {
  if (!parts_.panel) return;
  editing_ = false;
  parts_.panel->SetVisible(false);
  if (!cancelled) TakeValues(parts_.panel->Values());
  ResetAll();
}

void ServerControl::TakeValues(const PanelValues& values) {
  protocol::SerialPort& port = *parts_.serial_port;
  try {
    port.SetSettings(values.setting);
    port.SetPortNumber(values.comm_port);
    port.SetHandshaking(values.handshaking);
  } catch (const base::Failure& failure) {
    parts_.message_box->Show(failure.Description(), MessageStyle::kExclamation);
  }
  folders_ = {values.asap_folder, values.korv_folder};
  open_serial_at_start_ = values.com_auto_open;
  tcp_path_.SetPort(tcp_port_ = static_cast<std::uint16_t>(values.tcp_ip_port));
  SetAccess(values.listen, values.allow);
}

void ServerControl::SetAccess(const std::string& listen, const std::string& allow) {
  parts_.tcp_server->SetAccess(listen_ = listen, allow_ = allow);
}

void ServerControl::CloseTransports() {
  console_.Line("- Close tcpip server");
  try {
    tcp_path_.Close();
  } catch (const base::Failure& failure) {
    console_.Line("     close tcpip server error : " + failure.Description());
  }
  console_.Line("- Close RS232 comm port");
  try {
    serial_path_.Close();
  } catch (const base::Failure& failure) {
    console_.Line("     close RS232 comm port error : " + failure.Description());
  }
}

void ServerControl::OpenSerialPort() {
  if (!open_serial_at_start_ || parts_.serial_port->IsOpen()) return;
  console_.Line("- Open com port");
  serial_path_.Toggle();
}

void ServerControl::KeepSerialPortOpen() {
  if (!open_serial_at_start_ || terminated_) return;
  serial_timer_ = parts_.loop->CreateTimer([watch = self_] {
    if (const auto held = watch.lock()) held->LookAfterSerialPort();
  });
  LookAfterSerialPort();
}

void ServerControl::LookAfterSerialPort() {
  serial_timer_->Start(kSerialInterval);
  if (parts_.serial_port->IsOpen()) return;
  if (serial_path_.OpenAgain()) {
    console_.Line("- Open com port");
    serial_port_awaited_ = false;
  } else if (!std::exchange(serial_port_awaited_, true)) {
    console_.Line("The serial port is opened by itself as soon as that is possible");
  }
}

void ServerControl::QORGetInstallationInformation() {
  installation_ = ReadInstallationInformation(*parts_.settings, installation_);
  diagnosis_.SetServerFolder(installation_.install_location, parts_.application_folder);
}

void ServerControl::DropCollections() {
  acquisition_.Drop();
  asap_files_.Clear();
  asap_values_.Clear();
}

base::Task<bool> ServerControl::CreateDiagnosisObject(base::ByteBuffer& reply) {
  return diagnosis_.CreateDiagnosisObject(reply);
}

void ServerControl::ClearAcquiredDataView() { parts_.data->Clear(); }

void ServerControl::EndSession() {
  EndClientSession();
  diagnosis_.ReleaseDiagnosisObject();
}

void ServerControl::EndClientSession() {
  parts_.data->Clear();
  parts_.files->Clear();
  DropCollections();
  state_.Set(protocol::SessionState::State::kIdle);
}

bool ServerControl::ReleaseForPowerRequest(bool close_host_session) {
  using HostSession = diag::DiagnosisObject::HostSession;
  if (!diagnosis_.Session()) return false;
  diagnosis_.ReleaseDiagnosisObject(close_host_session ? HostSession::kClose : HostSession::kKeepOpen);
  return true;
}

}  // namespace korval::host
