// SPDX-License-Identifier: MIT
#include "protocol/TcpPath.h"

#include <optional>
#include <string>
#include <utility>

#include "base/AnsiText.h"
#include "base/Failure.h"
#include "protocol/Frame.h"

namespace korval::protocol {

TcpPath::TcpPath(TcpSocket& socket, CommandRunner& runner, SessionState& state, SessionServices& services,
                 host::TraceConsole& console, base::EventLoop& loop)
    : socket_(socket),
      runner_(runner),
      state_(state),
      services_(services),
      console_(console),
      loop_(loop),
      gap_(loop.CreateDeadline([this] {
        if (const auto held = owner_.lock()) OnGap();
      })) {}

void TcpPath::Bind(const std::weak_ptr<void>& owner) {
  owner_ = owner;
  command_.SetOwner(owner);
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
    console_.Line("Init WinSock error : " + failure.Description());
  }
}

void TcpPath::Close() {
  ++openings_;
  SetClient(std::nullopt);
  socket_.Close();
}

void TcpPath::OnConnectionRequest(TcpSocket::RequestId request) {
  SetClient(request);
  if (socket_.CurrentState() == TcpSocket::State::kConnected) socket_.Disconnect();
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
  SetClient(std::nullopt);
  console_.Line("close WinSock");
  socket_.Disconnect();
  state_.Set(SessionState::State::kIdle);
  const unsigned opening = openings_;
  services_.EndSession();
  // Whoever opened or closed the port while the session was being closed has settled what it is to be.
  if (opening == openings_) Reopen();
}

void TcpPath::SetClient(Client client) {
  if (awaiting_ == Awaiting::kRestOfFrame) ServeArrival();  // the rest will not come any more
  Await(Awaiting::kNothing);
  CallOffCommand();
  client_ = client;
  rest_ = 0;
  refused_ = 0;
}

void TcpPath::OnDataArrival() {
  if (awaiting_ == Awaiting::kRestOfRefused) {
    FollowRefused();
  } else if (command_.IsUnderWay() && !command_.IsCalledOff()) {
    RefuseWhileBusy();
  } else {
    TakeArrival();
  }
}

void TcpPath::Await(Awaiting rest) {
  awaiting_ = rest;
  if (rest == Awaiting::kNothing) {
    gap_->Clear();
  } else {
    gap_->Set(loop_.Now() + kArrivalGap);
  }
}

void TcpPath::OnGap() {
  if (std::exchange(awaiting_, Awaiting::kNothing) == Awaiting::kRestOfFrame) ServeArrival();
}

void TcpPath::TakeArrival() {
  if (command_.IsUnderWay()) return;  // of a client that is gone; this is looked at again when it has ended
  Client served;
  do {
    const base::ByteView received = socket_.Received();
    // The rest of a frame that was refused is not waited with: what comes behind it begins a frame again.
    if (IsIncomplete(received) && received.size() != rest_) return Await(Awaiting::kRestOfFrame);
    served = client_;
    ServeArrival();
  } while (!command_.IsUnderWay() && client_ != served && !socket_.Received().empty());
}

void TcpPath::RefuseWhileBusy() {
  refused_frame_ = refused_;
  FollowRefused();
  reply_suppressed_ = true;
  console_.Line("Error : Command in progress, wait end of last command before send a command ");
  runner_.FrameBuffer() = base::ByteBuffer::FromHex(kGlobalErrorFrame);
  socket_.Send(runner_.FrameBuffer().View());
}

// The pieces of one frame are refused once. They stay in the receive queue, also when the command has ended.
void TcpPath::FollowRefused() {
  const base::ByteView received = socket_.Received();
  refused_ = received.size();
  Await(IsIncomplete(received.subspan(refused_frame_)) ? Awaiting::kRestOfRefused : Awaiting::kNothing);
}

void TcpPath::ServeArrival() {
  Await(Awaiting::kNothing);
  refused_ = 0;
  reply_suppressed_ = false;
  runner_.FrameBuffer() = socket_.Receive();
  const auto ended_later = [this, served = client_] {
    CommandEnded();
    if (client_ != served && !socket_.Received().empty()) TakeArrival();
  };
  if (command_.Start(Serve(), ended_later)) CommandEnded();
}

void TcpPath::CommandEnded() {
  reply_suppressed_ = false;
  runner_.FrameBuffer().Clear();
}

void TcpPath::CallOffCommand() {
  if (!command_.IsUnderWay()) return;
  if (console_.DebugTrace()) console_.Line("The command in progress is dropped, its client is gone");
  command_.CallOff();
  if (!command_.IsUnderWay()) CommandEnded();
}

base::Task<void> TcpPath::Serve() {
  const base::ByteBuffer& frame = runner_.FrameBuffer();
  if (IsIncomplete(frame.View()) || !IsFrameLength(frame.Word(kLengthOffset))) {
    rest_ = frame.Length() <= rest_ ? rest_ - frame.Length() : MissingBytes(frame.View());
    console_.Line("Error : Invalid asap frame (" + base::Utf8FromAnsi(frame.View()) + ")");
    co_return;
  }
  rest_ = 0;
  if (console_.DebugTrace()) console_.Line("Byte received : " + frame.ToHex());
  if (!runner_.VerifyChecksum()) co_return;
  const CommandRunner::Outcome outcome = co_await runner_.Run();
  if (reply_suppressed_ || command_.IsCalledOff()) {
    runner_.DropPowerRequest();
    co_return;
  }
  if (runner_.PendingPowerRequest() != PowerRequest::kNone && !socket_.IsClientTrusted())
    runner_.RefusePowerRequest(socket_.RemoteHostIp());
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
    SetClient(std::nullopt);
    socket_.Disconnect();
  }
  runner_.ActOnPowerRequest();
  // A host whose power service refuses must stay reachable.
  if (released && opening == openings_) Reopen();
}

}  // namespace korval::protocol
