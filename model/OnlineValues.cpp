// SPDX-License-Identifier: MIT
#include "model/OnlineValues.h"

#include <algorithm>
#include <array>

#include "base/ErrorNumbers.h"
#include "protocol/FieldCodec.h"
#include "protocol/Reply.h"

namespace korval::model {
namespace {

constexpr std::size_t kValueColumn = 2;

bool IsLinkLost(const base::Failure& failure) {
  static constexpr std::array kNumbers{kLinkLost, kNoAnswer, kInitialisationRefused, kCommunicationEnded,
                                       kTesterPresentUnanswered};
  return std::find(kNumbers.begin(), kNumbers.end(), failure.Number()) != kNumbers.end();
}

base::Failure SessionClosed() { return {kLinkLost, "The session was closed while values were read"}; }

void AppendError(base::ByteBuffer& reply, const base::Failure& failure) {
  protocol::AppendErrorRecord(reply, failure.Description(), failure.Number());
}

}  // namespace

OnlineValues::OnlineValues(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis,
                           Acquisition& acquisition, host::ListView& data_view)
    : console_(console), diagnosis_(diagnosis), acquisition_(acquisition), data_view_(data_view) {}

void OnlineValues::AttachTo(protocol::Dispatcher& dispatcher) {
  dispatcher.Attach(
      protocol::CommandCode::kGetOnlineValue,
      [this](base::ByteView, base::ByteBuffer& reply) -> base::Task<std::int32_t> { return Handle(reply); });
}

base::Task<std::int32_t> OnlineValues::Handle(base::ByteBuffer& reply) {
  co_return co_await GetOnlineValue(reply) ? protocol::kSuccess : protocol::kError;
}

base::Task<bool> OnlineValues::GetOnlineValue(base::ByteBuffer& reply) {
  const auto items = acquisition_.Items();
  if (!items) {
    protocol::AppendWord(reply, 0);
    co_return true;
  }
  const Session session = diagnosis_.RequireSession();
  const auto ecu = acquisition_.CurrentEcu();
  const auto requests = acquisition_.RequestsToExecute();
  if (const auto failed = co_await ExecuteUntilFailure(session, requests)) {
    if (!IsLinkLost(failed->failure)) {
      AppendError(reply, failed->failure);
      console_.Line("GetOnlineValue error : Function='" + ecu->Function() + "' Request='" + failed->name +
                    "'  Error=" + failed->failure.Description());
      co_return false;
    }
    if (!co_await Reinitialise(session, reply)) co_return false;
    co_await ExecuteAll(session, requests);
  }
  if (acquisition_.Items() != items) throw SessionClosed();
  AppendValues(*items, reply);
  if (show_value_) ShowValues(items);
  co_return true;
}

base::Task<std::optional<OnlineValues::FailedRequest>> OnlineValues::ExecuteUntilFailure(
    Session session, std::shared_ptr<const Acquisition::Requests> requests) {
  for (const auto& request : *requests) {
    try {
      co_await request->Execute();
    } catch (const base::Failure& failure) {
      RequireCurrent(session);
      co_return FailedRequest{request->Name(), failure};
    }
    RequireCurrent(session);
  }
  co_return std::nullopt;
}

base::Task<void> OnlineValues::ExecuteAll(Session session,
                                          std::shared_ptr<const Acquisition::Requests> requests) {
  for (const auto& request : *requests) {
    try {
      co_await request->Execute();
    } catch (const base::Failure&) {
      // After the repetition the values are answered as they then stand.
    }
    RequireCurrent(session);
  }
}

base::Task<bool> OnlineValues::Reinitialise(Session session, base::ByteBuffer& reply) {
  for (const auto& ecu : session->Ecus()) {
    if (!ecu->Features().initialisation) continue;
    console_.Line("GetOnlineValue : Reinit Ecu " + ecu->Name());
    try {
      co_await ecu->Reinitialise();
    } catch (const base::Failure& failure) {
      RequireCurrent(session);
      AppendError(reply, failure);
      console_.Line("GetOnlineValue Function='" + ecu->Function() + "' Name='" + ecu->Name() +
                    "'  Init Error=" + failure.Description());
      co_return false;
    }
    RequireCurrent(session);
  }
  co_return true;
}

// Without this, a command whose session is gone would go on working on a host's.
void OnlineValues::RequireCurrent(const Session& session) const {
  if (diagnosis_.Session() != session || !acquisition_.Items()) {
    throw SessionClosed();
  }
}

void OnlineValues::AppendValues(const Acquisition::DataItems& items, base::ByteBuffer& reply) {
  reply.Reserve(reply.Length() + 2 + 4 * static_cast<std::size_t>(items.Count()));
  protocol::AppendWord(reply, items.Count());
  if (console_.DebugTrace()) {
    for (const auto& item : items) console_.Line("Data : " + item->Name() + " = " + item->Value().ToText());
  }
  acquisition_.AppendValues(reply);
}

// A client reads far more often than a list is repainted, and the texts cost more than the values.
void OnlineValues::ShowValues(const std::shared_ptr<const Acquisition::DataItems>& items) {
  data_view_.SetCellsWhenShown([&view = data_view_, items] {
    std::size_t row = 0;
    for (const auto& item : *items) view.SetCell(row++, kValueColumn, item->Text());
  });
}

}  // namespace korval::model
