// SPDX-License-Identifier: MIT
#include "protocol/TcpPath.h"

#include <string>

#include "base/AnsiText.h"
#include "base/Failure.h"
#include "protocol/Frame.h"

namespace korval::protocol {

TcpPath::TcpPath(TcpSocket& socket, CommandRunner& runner, SessionState& state, SessionServices& services,
                 host::TraceConsole& console)
    : socket_(socket), runner_(runner), state_(state), services_(services), console_(console) {}

void TcpPath::Bind(const std::weak_ptr<void>& owner) {
  TcpSocket::Events events;
  events.on_connection_request = [this, owner](TcpSocket::RequestId request) {
    if (const auto held = owner.lock()) OnConnectionRequest(request);
  };
  events.on_connect = [this, owner] {
    if (const auto held = owner.lock()) OnConnect();
  };
  events.on_data_arrival = [this, owner] {
    if (const auto held = owner.lock()) OnDataArrival();
  };
  events.on_close = [this, owner] {
    if (const auto held = owner.lock()) OnClose();
  };
  socket_.SetEvents(std::move(events));
}

void TcpPath::StartListening() {
  ++openings_;
  socket_.SetLocalPort(port_);
  socket_.Listen();
  console_.Line("Init WinSock : port=" + std::to_string(port_));
  console_.Line("          > LocalHostName=" + socket_.LocalHostName());
  console_.Line("          > LocalIP=" + socket_.LocalIp());
  console_.Line("          > LocalPort=" + std::to_string(socket_.LocalPort()));
}

void TcpPath::Reopen() noexcept {
  try {
    StartListening();
  } catch (const base::Failure& failure) {
    console_.Line(std::string("Init WinSock error : ") + failure.what());
  }
}

void TcpPath::Close() {
  ++openings_;
  client_.reset();
  socket_.Close();
}

void TcpPath::OnConnectionRequest(TcpSocket::RequestId request) {
  if (socket_.CurrentState() == TcpSocket::State::kConnected) socket_.Disconnect();
  client_ = request;
  if (!socket_.Accept(request)) {
    // The newcomer has gone again, and the one it replaced was dropped for it: nobody is left.
    OnClose();
    return;
  }
  console_.Line("Init WinSock : requestID=" + std::to_string(request));
  console_.Line("          > Name=" + socket_.Name());
  console_.Line("          > LocalHostName=" + socket_.LocalHostName());
  console_.Line("          > LocalIP=" + socket_.LocalIp());
  console_.Line("          > LocalPort=" + std::to_string(socket_.LocalPort()));
  console_.Line("          > RemoteHost=" + socket_.RemoteHost());
  console_.Line("          > RemoteHostIP=" + socket_.RemoteHostIp());
  console_.Line("          > RemotePort=" + std::to_string(socket_.RemotePort()));
  console_.Line("          > State=" + std::to_string(static_cast<int>(socket_.CurrentState())));
}

void TcpPath::OnConnect() { console_.Line("Connect WinSock"); }

void TcpPath::OnClose() {
  console_.Line("close WinSock");
  client_.reset();
  socket_.Disconnect();
  state_.Set(SessionState::State::kIdle);
  const unsigned opening = openings_;
  services_.EndSession();
  // Whoever opened or closed the port while the session was being closed has settled what it is to be.
  if (opening == openings_) Reopen();
}

void TcpPath::OnDataArrival() {
  if (busy_) {
    RefuseWhileBusy();
    return;
  }
  busy_ = true;
  reply_suppressed_ = false;
  runner_.FrameBuffer() = socket_.Receive();
  Serve();
  reply_suppressed_ = false;
  runner_.FrameBuffer().Clear();
  busy_ = false;
}

void TcpPath::RefuseWhileBusy() {
  reply_suppressed_ = true;
  console_.Line("Error : Command in progress, wait end of last command before send a command ");
  runner_.FrameBuffer() = base::ByteBuffer::FromHex(kGlobalErrorFrame);
  socket_.Send(runner_.FrameBuffer().View());
}

void TcpPath::Serve() {
  const base::ByteBuffer& frame = runner_.FrameBuffer();
  const std::size_t received = frame.Length();
  const std::size_t length = received < 2 ? 0 : frame.Word(kLengthOffset);
  if (received < length || !IsFrameLength(length)) {
    console_.Line("Error : Invalid asap frame (" + base::Utf8FromAnsi(frame.View()) + ")");
    return;
  }
  if (console_.DebugTrace()) console_.Line("Byte received : " + frame.ToHex());
  if (!runner_.VerifyChecksum()) return;
  const Client client = client_;
  const CommandRunner::Outcome outcome = runner_.Run();
  if (reply_suppressed_ || !client_ || client_ != client) {
    runner_.DropPowerRequest();
    return;
  }
  Answer(outcome);
  ServePowerRequest(false);
}

void TcpPath::Answer(const CommandRunner::Outcome& outcome) {
  runner_.Finish(outcome);
  const base::ByteBuffer& reply = runner_.FrameBuffer();
  if (console_.DebugTrace()) console_.Line("Byte send : " + reply.ToHex());
  socket_.Send(reply.View());
}

void TcpPath::ServePowerRequest(bool close_host_session) {
  const unsigned opening = openings_;
  const bool released = runner_.ReleaseForPowerRequest(close_host_session);
  if (released) {
    client_.reset();
    socket_.Disconnect();
  }
  runner_.ActOnPowerRequest();
  // A host whose power service refuses must stay reachable.
  if (released && opening == openings_) Reopen();
}

}  // namespace korval::protocol
