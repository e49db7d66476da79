// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include <QHostAddress>
#include <QSocketNotifier>

#include "base/ByteBuffer.h"

namespace korval::platform {

/// One accepted TCP client on its bare descriptor, which it owns. A request is a poll, a read and a write;
/// a stream class on top would cost as much again, and would announce no new bytes while the handler of
/// earlier ones waits. The callback comes from the event loop, also inside such a wait, and may destroy the
/// connection.
class TcpConnection {
 public:
  enum class End { kOpen, kClosed };
  static constexpr std::size_t kReadSize = std::size_t{64} * 1024;

  /// A peer that answers nothing, neither a probe in a silence nor data, for so long is gone. Data may have
  /// gone out just before a probe would have found out, so it is twice this until a dead peer is noticed.
  static constexpr std::chrono::seconds kSilenceOfTheDead{14};

  explicit TcpConnection(qintptr descriptor);
  ~TcpConnection();
  TcpConnection(const TcpConnection&) = delete;
  TcpConnection& operator=(const TcpConnection&) = delete;

  /// Whether the peer has ended the connection, in order or not; it may have left bytes to Read.
  bool PeerHasLeft() const;
  /// Starts watching: `on_readable` comes as long as there are bytes, or the end of the stream, to Read.
  void Watch(std::function<void()> on_readable);
  /// Appends what has arrived, at most kReadSize bytes at a time. kClosed at the end of the stream.
  End Read(base::ByteBuffer& bytes);
  /// Sends at once what the system takes and keeps the rest, in order, until it takes more. False, with
  /// nothing kept, when more than `limit` bytes would have to wait.
  bool Write(base::ByteView bytes, std::size_t limit);

  QHostAddress LocalAddress() const;
  QHostAddress RemoteAddress() const;
  std::uint16_t RemotePort() const;

 private:
  // A notifier may be let go inside its own signal.
  struct LetGo {
    void operator()(QSocketNotifier* notifier) const;
  };
  using Notifier = std::unique_ptr<QSocketNotifier, LetGo>;

  void SetOption(int level, int option, int value) const;
  std::size_t WriteNow(base::ByteView bytes);
  void WriteUnsent();

  int descriptor_;
  Notifier readable_;
  Notifier writable_;
  base::ByteBuffer unsent_;
};

}  // namespace korval::platform
