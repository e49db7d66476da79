// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "base/ByteBuffer.h"

namespace korval::protocol {

/// The seam to the TCP server socket: it listens, and holds at most one accepted client. Every event is
/// delivered from the event loop, also while a handler of an earlier event waits. A client that is dead, or
/// cut off, is noticed within 30 s.
class TcpSocket {
 public:
  enum class State { kClosed = 0, kListening = 2, kConnected = 7 };

  /// Numbers a connection request; every client gets a new one.
  using RequestId = std::int64_t;

  struct Events {
    /// A client that has gone by then is not there to be replaced: its on_close has come before.
    std::function<void(RequestId)> on_connection_request;
    std::function<void()> on_connect;
    /// Bytes have arrived, and stand behind those that the receive queue held before.
    std::function<void()> on_data_arrival;
    /// The client disconnected or was lost. What it sent can still be received, until Disconnect.
    std::function<void()> on_close;
  };

  virtual ~TcpSocket() = default;
  virtual void SetEvents(Events events) = 0;

  /// The local address to listen on, "" for all of them, and the clients to let in, "" for everybody. Both
  /// hold from the next Listen on, which refuses texts that it does not understand.
  virtual void SetAccess(const std::string& listen, const std::string& allow) = 0;
  /// 0 takes any free port when listening begins; that port is then kept for later calls of Listen.
  virtual void SetLocalPort(std::uint16_t port) = 0;
  /// Starts listening, or goes on when it already does. Raises Failure when the port cannot be opened or
  /// nobody knows for whom, with the port, the reason and what to do.
  virtual void Listen() = 0;
  /// Makes the requesting client the current one. False when that client has gone meanwhile.
  virtual bool Accept(RequestId request) = 0;
  /// Drops the current client without an event and goes on listening.
  virtual void Disconnect() = 0;
  /// Drops the current client without an event and stops listening.
  virtual void Close() = 0;

  virtual State CurrentState() const = 0;
  /// Whether the current client is on this machine or one of those that SetAccess lists.
  virtual bool IsClientTrusted() const = 0;
  /// The receive queue, which it leaves as it is. The queue is bounded: a client that sends more than
  /// kReceiveQueueLimit bytes without being read is dropped with a close event.
  virtual base::ByteView Received() const = 0;
  /// Takes everything from the receive queue.
  virtual base::ByteBuffer Receive() = 0;
  /// Sends to the current client; bytes for a client that is gone are dropped.
  virtual void Send(base::ByteView bytes) = 0;

  virtual std::string Name() const = 0;
  virtual std::string LocalHostName() const = 0;
  virtual std::string LocalIp() const = 0;
  virtual std::uint16_t LocalPort() const = 0;
  virtual std::string RemoteHost() const = 0;
  virtual std::string RemoteHostIp() const = 0;
  virtual std::uint16_t RemotePort() const = 0;

  static constexpr std::size_t kReceiveQueueLimit = std::size_t{1024} * 1024;
};

}  // namespace korval::protocol
