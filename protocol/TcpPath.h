// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "base/EventLoop.h"
#include "base/Job.h"
#include "host/trace/TraceConsole.h"
#include "protocol/CommandRunner.h"
#include "protocol/TcpSocket.h"

namespace korval::protocol {

/// The TCP transport: listens, serves one client at a time, and answers each frame that arrives whole in
/// one arrival. While a command waits, a further frame gets the canned "Global error" frame and silences the
/// command's own reply. The command of a client that leaves or is replaced is called off.
///
/// A network cuts a long frame into pieces. Those that come within kArrivalGap of one another are one
/// arrival; a frame that is whole is served in the event that completes it.
class TcpPath {
 public:
  static constexpr std::chrono::milliseconds kArrivalGap{20};

  /// The arguments outlive the path.
  TcpPath(TcpSocket& socket, CommandRunner& runner, SessionState& state, SessionServices& services,
          host::TraceConsole& console, base::EventLoop& loop);

  /// Takes the socket's events. `owner` owns this path and everything it works on; it is held for the
  /// length of each event, so that it may be let go inside one.
  void Bind(const std::weak_ptr<void>& owner);

  void SetPort(std::uint16_t port) { port_ = port; }
  /// Raises Failure when the port cannot be opened.
  void StartListening();
  /// As StartListening; a failure is traced.
  void Reopen() noexcept;
  /// Drops the client and stops listening.
  void Close();
  /// After the reply to a power request has been sent on either transport.
  void ServePowerRequest(bool close_host_session);

 private:
  using Client = std::optional<TcpSocket::RequestId>;
  enum class Awaiting { kNothing, kRestOfFrame, kRestOfRefused };

  void OnConnectionRequest(TcpSocket::RequestId request);
  void OnConnect();
  void OnDataArrival();
  void OnClose();
  void OnGap();
  void SetClient(Client client);
  void TakeArrival();
  void RefuseWhileBusy();
  void FollowRefused();
  void Await(Awaiting rest);
  void ServeArrival();
  base::Task<void> Serve();
  void CommandEnded();
  void CallOffCommand();
  void Answer(const CommandRunner::Outcome& outcome);

  TcpSocket& socket_;
  CommandRunner& runner_;
  SessionState& state_;
  SessionServices& services_;
  host::TraceConsole& console_;
  std::uint16_t port_ = 0;
  bool reply_suppressed_ = false;
  Client client_;
  base::Job command_;  // of the client, unless it is called off
  unsigned openings_ = 0;
  std::weak_ptr<void> owner_;
  Awaiting awaiting_ = Awaiting::kNothing;
  base::EventLoop& loop_;
  std::unique_ptr<base::Deadline> gap_;  // ends an arrival that lacks bytes
  std::size_t rest_ = 0;                 // what a frame lacked when it was refused for that
  // Of the receive queue, while a command was in progress: what was refused, and where its last frame begins.
  std::size_t refused_ = 0;
  std::size_t refused_frame_ = 0;
};

}  // namespace korval::protocol
