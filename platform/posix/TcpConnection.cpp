// SPDX-License-Identifier: MIT
#include "platform/TcpConnection.h"

#include <array>
#include <cerrno>
#include <utility>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace korval::platform {
namespace {

// A silent peer is probed until kSilenceOfTheDead is over, and given up with the last probe.
constexpr int kProbeAfter = 5;  // seconds
constexpr int kProbeEvery = 3;  // seconds
constexpr int kProbes = 3;
static_assert(std::chrono::seconds(kProbeAfter + kProbeEvery * kProbes) == TcpConnection::kSilenceOfTheDead);

bool IsOnlyBusy(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

using NameCall = int (*)(int, sockaddr*, socklen_t*);

sockaddr_storage NameOf(int descriptor, NameCall call) {
  sockaddr_storage name = {};
  socklen_t length = sizeof name;
  if (call(descriptor, reinterpret_cast<sockaddr*>(&name), &length) != 0) name.ss_family = AF_UNSPEC;
  return name;
}

QHostAddress AddressOf(const sockaddr_storage& name) {
  return QHostAddress(reinterpret_cast<const sockaddr*>(&name));
}

}  // namespace

TcpConnection::TcpConnection(qintptr descriptor) : descriptor_(static_cast<int>(descriptor)) {
  // A reply is one small packet that the client waits for.
  SetOption(IPPROTO_TCP, TCP_NODELAY, 1);
  SetOption(SOL_SOCKET, SO_KEEPALIVE, 1);
  SetOption(IPPROTO_TCP, TCP_KEEPIDLE, kProbeAfter);
  SetOption(IPPROTO_TCP, TCP_KEEPINTVL, kProbeEvery);
  SetOption(IPPROTO_TCP, TCP_KEEPCNT, kProbes);
  SetOption(IPPROTO_TCP, TCP_USER_TIMEOUT,
            static_cast<int>(std::chrono::milliseconds(kSilenceOfTheDead).count()));
}

void TcpConnection::SetOption(int level, int option, int value) const {
  ::setsockopt(descriptor_, level, option, &value, sizeof value);
}

TcpConnection::~TcpConnection() {
  readable_.reset();
  writable_.reset();
  ::close(descriptor_);
}

void TcpConnection::LetGo::operator()(QSocketNotifier* notifier) const {
  notifier->setEnabled(false);
  notifier->disconnect();
  notifier->deleteLater();
}

void TcpConnection::Watch(std::function<void()> on_readable) {
  readable_.reset(new QSocketNotifier(descriptor_, QSocketNotifier::Read));
  QObject::connect(readable_.get(), &QSocketNotifier::activated, readable_.get(), std::move(on_readable));
}

bool TcpConnection::PeerHasLeft() const {
  pollfd state{descriptor_, POLLRDHUP, 0};
  return ::poll(&state, 1, 0) > 0 && (state.revents & POLLRDHUP) != 0;
}

TcpConnection::End TcpConnection::Read(base::ByteBuffer& bytes) {
  static thread_local std::array<std::uint8_t, kReadSize> chunk;
  const auto count = ::recv(descriptor_, chunk.data(), chunk.size(), MSG_DONTWAIT);
  if (count == 0 || (count < 0 && !IsOnlyBusy(errno))) return End::kClosed;
  if (count > 0) bytes.Append(base::ByteView(chunk.data(), static_cast<std::size_t>(count)));
  return End::kOpen;
}

bool TcpConnection::Write(base::ByteView bytes, std::size_t limit) {
  if (unsent_.Empty()) bytes = bytes.subspan(WriteNow(bytes));
  if (bytes.empty()) return true;
  if (unsent_.Length() + bytes.size() > limit) return false;
  unsent_.Append(bytes);
  if (!writable_) {
    writable_.reset(new QSocketNotifier(descriptor_, QSocketNotifier::Write));
    QObject::connect(writable_.get(), &QSocketNotifier::activated, writable_.get(),
                     [this] { WriteUnsent(); });
  }
  return true;
}

std::size_t TcpConnection::WriteNow(base::ByteView bytes) {
  const auto count = ::send(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  if (count >= 0) return static_cast<std::size_t>(count);
  // On a broken connection nothing needs to be kept; reading reports its end.
  return IsOnlyBusy(errno) ? 0 : bytes.size();
}

void TcpConnection::WriteUnsent() {
  const std::size_t sent = WriteNow(unsent_.View());
  unsent_ = base::ByteBuffer(unsent_.View(sent, unsent_.Length() - sent));
  if (unsent_.Empty()) writable_.reset();
}

QHostAddress TcpConnection::LocalAddress() const { return AddressOf(NameOf(descriptor_, ::getsockname)); }

QHostAddress TcpConnection::RemoteAddress() const { return AddressOf(NameOf(descriptor_, ::getpeername)); }

std::uint16_t TcpConnection::RemotePort() const {
  const sockaddr_storage name = NameOf(descriptor_, ::getpeername);
  const auto& port = name.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6&>(name).sin6_port
                                                : reinterpret_cast<const sockaddr_in&>(name).sin_port;
  return ntohs(port);
}

}  // namespace korval::platform
