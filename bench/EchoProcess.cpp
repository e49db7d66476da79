// SPDX-License-Identifier: MIT
#include "bench/EchoProcess.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include <QCoreApplication>
#include <QTcpServer>
#include <QTcpSocket>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korval::bench {
namespace {

struct Sizes {
  std::size_t request = 0;
  std::size_t reply = 0;
};
constexpr std::size_t kGreeting = 8;

Sizes SizesOf(const char* greeting) {
  const auto number = [greeting](std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i) value = (value << 8) | static_cast<unsigned char>(greeting[i]);
    return value;
  };
  return {number(0), number(4)};
}

// The port is known before the process is: the socket is opened by the parent.
int ListeningSocket(int& port) {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, size) != 0 || listen(listener, 8) != 0 ||
      getsockname(listener, generic, &size) != 0)
    throw std::runtime_error("no port for the echo server");
  port = ntohs(address.sin_port);
  return listener;
}

bool ReadFully(int socket, char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t received = recv(socket, bytes, count, 0);
    if (received <= 0) return false;
    bytes += received;
    count -= static_cast<std::size_t>(received);
  }
  return true;
}

void ServePlain(int socket) {
  const int on = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  std::array<char, kGreeting> greeting{};
  if (!ReadFully(socket, greeting.data(), greeting.size())) return;
  const Sizes sizes = SizesOf(greeting.data());
  std::vector<char> request(sizes.request);
  const std::vector<char> reply(sizes.reply);
  while (ReadFully(socket, request.data(), request.size()) &&
         send(socket, reply.data(), reply.size(), MSG_NOSIGNAL) > 0) {
  }
}

// One process for each client, so that several connections can stay open at once.
void RunPlain(int listener) {
  signal(SIGCHLD, SIG_IGN);
  while (true) {
    const int client = accept(listener, nullptr, nullptr);
    if (client < 0) return;
    if (fork() == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      ServePlain(client);
      _exit(0);
    }
    close(client);
  }
}

class QtEcho {
 public:
  explicit QtEcho(QTcpSocket* socket) : socket_(socket) {
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    QObject::connect(socket_, &QTcpSocket::readyRead, [this] { Serve(); });
  }

 private:
  void Serve() {
    if (sizes_.request == 0) {
      if (socket_->bytesAvailable() < static_cast<qint64>(kGreeting)) return;
      sizes_ = SizesOf(socket_->read(kGreeting).constData());
    }
    while (socket_->bytesAvailable() >= static_cast<qint64>(sizes_.request)) {
      socket_->read(static_cast<qint64>(sizes_.request));
      socket_->write(QByteArray(static_cast<qsizetype>(sizes_.reply), '\0'));
      socket_->flush();
    }
  }

  QTcpSocket* socket_;
  Sizes sizes_;
};

void RunQt(int listener) {
  int count = 1;
  std::array<char, 5> name{"echo"};
  std::array<char*, 2> arguments{name.data(), nullptr};
  const QCoreApplication application(count, arguments.data());
  QTcpServer server;
  server.setSocketDescriptor(listener);
  std::vector<std::unique_ptr<QtEcho>> clients;
  QObject::connect(&server, &QTcpServer::newConnection, [&server, &clients] {
    while (QTcpSocket* const socket = server.nextPendingConnection()) {
      clients.push_back(std::make_unique<QtEcho>(socket));
    }
  });
  QCoreApplication::exec();
}

}  // namespace

EchoProcess::EchoProcess(Kind kind) {
  const int listener = ListeningSocket(port_);
  process_ = fork();
  if (process_ < 0) throw std::runtime_error("no process for the echo server");
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    kind == Kind::kPlain ? RunPlain(listener) : RunQt(listener);
    _exit(0);
  }
  close(listener);
}

EchoProcess::~EchoProcess() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace korval::bench
