// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "base/ByteBuffer.h"
#include "host/power/PowerControl.h"
#include "host/trace/TextTerminal.h"
#include "host/trace/TraceConsole.h"
#include "protocol/CommandRunner.h"
#include "protocol/Dispatcher.h"
#include "protocol/SerialPath.h"
#include "protocol/SessionState.h"
#include "protocol/TcpPath.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakePower.h"
#include "tests/support/FakeSerialPort.h"
#include "tests/support/FakeServices.h"
#include "tests/support/FakeStatusView.h"
#include "tests/support/FakeTcpSocket.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::tests {

/// A request frame with the length and the checksum that belong to it.
inline base::ByteBuffer Request(std::uint16_t code, const std::string& parameters_hex = "") {
  const base::ByteBuffer parameters = base::ByteBuffer::FromHex(parameters_hex);
  base::ByteBuffer frame;
  frame.SetLength(4);
  frame.SetWord(0, static_cast<std::uint16_t>(parameters.Length() + 6));
  frame.SetWord(2, code);
  frame.Append(parameters.View());
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < frame.Length(); i += 2) sum += frame.Word(i);
  frame.SetLength(frame.Length() + 2);
  frame.SetWord(frame.Length() - 2, static_cast<std::uint16_t>(sum & 0xFFFFU));
  return frame;
}

/// Both receive paths, the dispatcher and the session state on transports in memory. The trace goes into
/// `trace` and, piece by piece, into the log as "trace TEXT".
class ProtocolBench {
 public:
  /// What the control owns of it, held as the control is: shared, and let go at any time.
  struct Server {
    explicit Server(ProtocolBench& bench)
        : console(bench.terminal),
          power(bench.power, bench.message_box),
          state(bench.view),
          dispatcher(console, state, bench.services),
          runner(dispatcher, state, bench.services, console, power),
          tcp(bench.socket, runner, state, bench.services, console, bench.loop),
          serial(bench.port, runner, tcp, console, bench.view, bench.loop,
                 [&bench](bool open) { bench.log.emplace_back(open ? "toggled open" : "toggled closed"); }) {}

    host::TraceConsole console;
    host::PowerControl power;
    protocol::SessionState state;
    protocol::Dispatcher dispatcher;
    protocol::CommandRunner runner;
    protocol::TcpPath tcp;
    protocol::SerialPath serial;
  };

  ProtocolBench() {
    server->tcp.Bind(server);
    server->serial.Bind(server);
    server->tcp.SetPort(1001);
  }

  /// A listening server with one client; the log and the traces of that are forgotten.
  void ConnectClient() {
    server->tcp.StartListening();
    socket.Connect();
    Forget();
  }
  void Forget() {
    log.clear();
    trace.clear();
  }
  std::string TakeTrace() { return std::exchange(trace, {}); }
  /// The position of an entry in the log; the log's size when it is not there.
  std::size_t LogIndex(const std::string& entry) const {
    return static_cast<std::size_t>(std::find(log.begin(), log.end(), entry) - log.begin());
  }
  bool Logged(const std::string& entry) const { return LogIndex(entry) < log.size(); }

  CallLog log;
  std::string trace;
  host::TextTerminal terminal{[this](std::string_view text) {
    trace += text;
    log.push_back("trace " + std::string(text));
  }};
  ManualEventLoop loop;
  FakeStatusView view;
  FakeTcpSocket socket{log};
  FakeSerialPort port{log};
  FakeServices services{log};
  FakePower power{log};
  FakeMessageBox message_box{log};
  std::shared_ptr<Server> server = std::make_shared<Server>(*this);
};

}  // namespace korval::tests
