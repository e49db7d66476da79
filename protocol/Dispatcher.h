// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <variant>

#include "base/ByteBuffer.h"
#include "base/Task.h"
#include "host/trace/TraceConsole.h"
#include "protocol/SessionServices.h"
#include "protocol/SessionState.h"

namespace korval::protocol {

enum class CommandCode : std::int32_t {
  kInit = 2,
  kSelectFile = 3,
  kSetAcquisition = 12,
  kSwitchOffline = 13,
  kGetParameter = 14,
  kSetParameter = 15,
  kGetOnlineValue = 19,
  kIdentify = 20,
  kExit = 50,
  kExtendedGetParameter = 114,
  kExtendedSetParameter = 115
};

/// Checks a request against the session state and hands it to its handler. Serves the session's own
/// commands (init, identify, switching, exit) itself; the others attach their handlers. No failure
/// leaves Dispatch: one with a text becomes an error record with code 1.
class Dispatcher {
 public:
  /// Takes the parameter area (read position 0) and the empty reply data, returns the status. Raises
  /// Failure for an error record with code 1. Both arguments outlive the task.
  using Handler = std::function<base::Task<std::int32_t>(base::ByteView parameters, base::ByteBuffer& reply)>;
  /// The same for a command that never waits.
  using Immediate = std::function<std::int32_t(base::ByteView parameters, base::ByteBuffer& reply)>;

  /// The arguments outlive the dispatcher.
  Dispatcher(host::TraceConsole& console, SessionState& state, SessionServices& services);

  /// Until its handler is attached, a command is answered as unknown.
  void Attach(CommandCode code, Handler handler);
  void Attach(CommandCode code, Immediate handler);

  /// Carries out one request; `reply` is filled from empty and never exceeds kMaxReplyData. Both arguments
  /// outlive the task.
  base::Task<std::int32_t> Dispatch(std::int32_t code, base::ByteView parameters, base::ByteBuffer& reply);

 private:
  struct Row {
    bool (*allowed)(SessionState::State state);
    std::string refusal;
    bool refusal_only_when_debugging;
    std::variant<std::monostate, Immediate, Handler> handler;
  };

  base::Task<std::int32_t> Run(const Row& row, base::ByteView parameters, base::ByteBuffer& reply);
  std::int32_t Fitting(std::int32_t status, base::ByteBuffer& reply);
  std::int32_t Unknown(std::int32_t code, base::ByteView parameters);
  base::Task<std::int32_t> Init(base::ByteBuffer& reply);
  std::int32_t Identify(base::ByteView parameters, base::ByteBuffer& reply);
  std::int32_t SwitchOffline(base::ByteView parameters);
  std::int32_t Exit();

  host::TraceConsole& console_;
  SessionState& state_;
  SessionServices& services_;
  std::map<std::int32_t, Row> rows_;
};

}  // namespace korval::protocol
