// SPDX-License-Identifier: MIT
#include "protocol/Dispatcher.h"

#include <exception>
#include <utility>

#include "base/Failure.h"
#include "protocol/FieldCodec.h"
#include "protocol/Frame.h"
#include "protocol/NamedField.h"
#include "protocol/Reply.h"

namespace korval::protocol {
namespace {

using State = SessionState::State;

// Version 2.1 of the protocol, in the major-times-256-plus-minor form.
constexpr std::int32_t kProtocolVersion = 0x0201;
constexpr char kServerName[] = "Korval Asap3 server Version 2.0";

bool Always(State) { return true; }
bool AfterInit(State state) { return state == State::kInit; }
bool AfterIdentify(State state) { return state == State::kIdentify || state == State::kFileSelected; }
bool WithFile(State state) { return state == State::kFileSelected; }

}  // namespace

Dispatcher::Dispatcher(host::TraceConsole& console, SessionState& state, SessionServices& services)
    : console_(console), state_(state), services_(services) {
  const auto row = [this](CommandCode code, bool (*allowed)(State), const char* refusal, bool debug_only) {
    rows_[static_cast<std::int32_t>(code)] = Row{allowed, refusal, debug_only, {}};
  };
  const char* const set_refusal = "set parameter receive without file, not processed";
  row(CommandCode::kInit, Always, "", false);
  row(CommandCode::kSelectFile, AfterIdentify, "select file receive without init and identify, not processed",
      false);
  row(CommandCode::kSetAcquisition, WithFile, set_refusal, false);
  row(CommandCode::kSwitchOffline, Always, "", false);
  row(CommandCode::kGetParameter, WithFile, "Get parameter receive without file, not processed", true);
  row(CommandCode::kSetParameter, WithFile, set_refusal, true);
  row(CommandCode::kGetOnlineValue, WithFile, set_refusal, false);
  row(CommandCode::kIdentify, AfterInit, "identify receive without init, not processed", false);
  row(CommandCode::kExit, Always, "", false);
  row(CommandCode::kExtendedGetParameter, WithFile,
      "Extended get parameter receive without file, not processed", true);
  row(CommandCode::kExtendedSetParameter, WithFile,
      "Extended set parameter receive without file, not processed", true);

  Attach(CommandCode::kInit, [this](base::ByteView, base::ByteBuffer& reply) { return Init(reply); });
  Attach(CommandCode::kIdentify,
         [this](base::ByteView parameters, base::ByteBuffer& reply) { return Identify(parameters, reply); });
  Attach(CommandCode::kSwitchOffline,
         [this](base::ByteView parameters, base::ByteBuffer&) { return SwitchOffline(parameters); });
  Attach(CommandCode::kExit, [this](base::ByteView, base::ByteBuffer&) { return Exit(); });
}

void Dispatcher::Attach(CommandCode code, Handler handler) {
  rows_.at(static_cast<std::int32_t>(code)).handler = std::move(handler);
}

void Dispatcher::Attach(CommandCode code, Immediate handler) {
  rows_.at(static_cast<std::int32_t>(code)).handler = std::move(handler);
}

base::Task<std::int32_t> Dispatcher::Dispatch(std::int32_t code, base::ByteView parameters,
                                              base::ByteBuffer& reply) {
  reply.Clear();
  const auto row = rows_.find(code);
  if (row == rows_.end() || std::holds_alternative<std::monostate>(row->second.handler)) {
    co_return Unknown(code, parameters);
  }
  if (!row->second.allowed(state_.Current())) {
    if (!row->second.refusal_only_when_debugging || console_.DebugTrace()) console_.Line(row->second.refusal);
    co_return kNotProcessed;
  }
  std::string description;
  try {
    const std::int32_t status = co_await Run(row->second, parameters, reply);
    co_return Fitting(status, reply);
  } catch (const base::Failure& failure) {
    description = failure.Description();
  } catch (const std::exception& failure) {
    description = failure.what();
  }
  reply.Clear();
  co_return ReplyError(console_, reply, description, kOwnFailure);
}

base::Task<std::int32_t> Dispatcher::Run(const Row& row, base::ByteView parameters, base::ByteBuffer& reply) {
  if (const Handler* handler = std::get_if<Handler>(&row.handler)) return (*handler)(parameters, reply);
  return
      [](const Immediate& handler, base::ByteView area, base::ByteBuffer& data) -> base::Task<std::int32_t> {
        co_return handler(area, data);
      }(std::get<Immediate>(row.handler), parameters, reply);
}

std::int32_t Dispatcher::Fitting(std::int32_t status, base::ByteBuffer& reply) {
  if (reply.Length() <= kMaxReplyData) return status;
  const std::string size = std::to_string(reply.Length());
  reply.Clear();
  return ReplyError(console_, reply,
                    "the answer of " + size + " bytes does not fit into one frame, ask for less",
                    kOwnFailure);
}

std::int32_t Dispatcher::Unknown(std::int32_t code, base::ByteView parameters) {
  console_.Line("Error unknown cmd code=" + std::to_string(code) + "  data=" + base::HexText(parameters));
  return kUnknownCommand;
}

base::Task<std::int32_t> Dispatcher::Init(base::ByteBuffer& reply) {
  console_.Line("init()");
  const bool available = co_await services_.CreateDiagnosisObject(reply);
  state_.Set(available ? State::kInit : State::kIdle);
  services_.ClearAcquiredDataView();
  co_return available ? kSuccess : kError;
}

std::int32_t Dispatcher::Identify(base::ByteView parameters, base::ByteBuffer& reply) {
  std::size_t position = 0;
  const std::int32_t version =
      ReadNamedField("identify", "version", "word", [&] { return ReadWord(parameters, position); });
  const std::string name =
      ReadNamedField("identify", "name", "string", [&] { return ReadString(parameters, position); });
  state_.SetRemote(version, name);
  console_.Line("identify(" + std::to_string(version) + "," + name + ")");
  AppendWord(reply, kProtocolVersion);
  AppendString(reply, kServerName);
  state_.Set(State::kIdentify);
  return kSuccess;
}

std::int32_t Dispatcher::SwitchOffline(base::ByteView parameters) {
  std::size_t position = 0;
  const std::int32_t mode = ReadNamedField("switching offline/online", "mode", "word",
                                           [&] { return ReadWord(parameters, position); });
  console_.Line("switching offline/online(" + std::to_string(mode) + ")");
  return kSuccess;
}

std::int32_t Dispatcher::Exit() {
  console_.Line("exit()");
  state_.Set(State::kIdle);
  services_.EndSession();
  return kSuccess;
}

}  // namespace korval::protocol
