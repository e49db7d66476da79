// SPDX-License-Identifier: MIT
#include "protocol/SerialPath.h"

#include <utility>

#include "base/AnsiText.h"
#include "base/Failure.h"
#include "protocol/Frame.h"

namespace korval::protocol {
namespace {

std::string MessageOf(CommEvent event) {
  switch (event) {
    case CommEvent::kBreak:
      return "Break Received";
    case CommEvent::kCarrierDetectTimeout:
      return "Carrier Detect Timeout";
    case CommEvent::kCtsTimeout:
      return "CTS Timeout";
    case CommEvent::kDcbError:
      return "Error retrieving DCB";
    case CommEvent::kDsrTimeout:
      return "DSR Timeout";
    case CommEvent::kFraming:
      return "Framing Error";
    case CommEvent::kOverrun:
      return "Overrun Error";
    case CommEvent::kReceiveBufferOverflow:
      return "Receive Buffer Overflow";
    case CommEvent::kParity:
      return "Parity Error";
    case CommEvent::kTransmitBufferFull:
      return "Transmit Buffer Full";
    case CommEvent::kSend:
    case CommEvent::kReceive:
      break;
  }
  return {};
}

}  // namespace

SerialPath::SerialPath(SerialPort& port, CommandRunner& runner, TcpPath& tcp, host::TraceConsole& console,
                       host::StatusView& view, base::EventLoop& loop, OnToggled on_toggled)
    : port_(port),
      runner_(runner),
      tcp_(tcp),
      console_(console),
      view_(view),
      on_toggled_(std::move(on_toggled)),
      loop_(loop),
      watchdog_(loop.CreateDeadline([this] {
        if (const auto held = owner_.lock()) OnWatchdog();
      })) {}

void SerialPath::Bind(const std::weak_ptr<void>& owner) {
  owner_ = owner;
  port_.SetOnComm([this, owner](CommEvent event) {
    if (const auto held = owner.lock()) OnComm(event);
  });
}

void SerialPath::Toggle() {
  failure_.clear();
  Change(!port_.IsOpen());
}

bool SerialPath::OpenAgain() {
  if (!port_.IsOpen()) Change(true);
  return port_.IsOpen();
}

void SerialPath::Change(bool open) {
  const bool was_open = port_.IsOpen();
  std::string failure;
  try {
    open ? port_.Open() : port_.Close();
    port_.DeliverRawBytes();
  } catch (const base::Failure& refused) {
    failure = refused.Description();
  }
  if (!failure.empty() && failure != failure_) console_.Line("Error : " + failure);
  failure_ = failure;
  const bool is_open = port_.IsOpen();
  if (was_open && is_open) return;
  ++opening_;
  ShowSettings();
  on_toggled_(is_open);
}

void SerialPath::Close() {
  ++opening_;
  port_.Close();
  view_.ShowConnected(false);
  on_toggled_(false);
}

void SerialPath::ShowSettings() {
  view_.ShowConnected(port_.IsOpen());
  view_.ShowPanel("Settings", "COM" + std::to_string(port_.PortNumber()) + " Settings: " + port_.Settings());
}

void SerialPath::OnComm(CommEvent event) {
  if (event == CommEvent::kReceive) {
    OnReceive();
    return;
  }
  const std::string message = MessageOf(event);
  if (!message.empty()) console_.Line("Error : " + message);
  if (event == CommEvent::kDcbError && !port_.IsOpen()) OnLost();
}

// The device was unplugged: the console shows the port as it now is.
void SerialPath::OnLost() {
  ++opening_;
  ShowSettings();
  on_toggled_(false);
}

void SerialPath::OnReceive() {
  base::ByteBuffer& frame = runner_.FrameBuffer();
  frame.Append(port_.Read().View());
  ArmWatchdog();
  if (frame.Length() < 2) return;
  const std::size_t length = frame.Word(kLengthOffset);
  if (length == 0) {
    StopWatchdog();
    frame.Clear();
    return;
  }
  if (length > frame.Length()) return;
  StopWatchdog();
  if (IsFrameLength(length)) return Serve();
  console_.Line("Error : Invalid asap frame (" + base::Utf8FromAnsi(frame.View()) + ")");
  frame.Clear();
}

void SerialPath::Serve() {
  std::erase_if(commands_, [](const base::Job& command) { return !command.IsUnderWay(); });
  if (commands_.size() == kMostCommands) {
    console_.Line("Error : serial frame dropped, " + std::to_string(kMostCommands) +
                  " commands are in progress");
    runner_.FrameBuffer().Clear();
    return;
  }
  base::Job& command = commands_.emplace_back();
  command.SetOwner(owner_);
  command.Start(Answer());
}

// The frame stays in the buffer until its command has ended.
base::Task<void> SerialPath::Answer() {
  if (runner_.VerifyChecksum()) {
    const int opening = opening_;
    const CommandRunner::Outcome outcome = co_await runner_.Run();
    if (opening != opening_) {  // who asked is not at the other end any more
      runner_.DropPowerRequest();
    } else {
      runner_.Finish(outcome);
      port_.Write(runner_.FrameBuffer().View());
      tcp_.ServePowerRequest(true);
    }
  }
  runner_.FrameBuffer().Clear();
}

void SerialPath::ArmWatchdog() {
  watchdog_->Clear();
  view_.ShowPanel("timeout", "Timeout armed");
  watchdog_->Set(loop_.Now() + kWatchdogInterval);
}

void SerialPath::StopWatchdog() {
  watchdog_->Clear();
  view_.ShowPanel("timeout", "Timeout stop");
}

void SerialPath::OnWatchdog() {
  view_.ShowPanel("timeout", "Timeout fail");
  runner_.FrameBuffer().Clear();
  console_.Line("Timeout fail - empty buffer");
}

}  // namespace korval::protocol
