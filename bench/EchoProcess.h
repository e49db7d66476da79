// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

namespace korval::bench {

/// An echo server on 127.0.0.1 in a process of its own: the bare cost of moving bytes there and back. A
/// client first sends two words of 32 bits, most significant byte first: the size of its requests and of
/// the replies it wants. Each request is then answered by that many bytes.
class EchoProcess {
 public:
  enum class Kind {
    kPlain,  ///< blocking calls on a plain socket: the least that any server can cost
    kQt      ///< QTcpServer on Qt's event loop, as a server that must also do other things has it
  };

  /// Forks; to be called before the calling process has threads.
  explicit EchoProcess(Kind kind);
  ~EchoProcess();
  EchoProcess(const EchoProcess&) = delete;
  EchoProcess& operator=(const EchoProcess&) = delete;

  int Port() const { return port_; }

 private:
  int port_ = 0;
  pid_t process_ = -1;
};

}  // namespace korval::bench
