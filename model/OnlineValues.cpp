// SPDX-License-Identifier: MIT
#include "model/OnlineValues.h"

#include <algorithm>
#include <array>

#include "base/Errand.h"
#include "diag/LinkErrors.h"
#include "protocol/FieldCodec.h"
#include "protocol/Reply.h"

namespace korval::model {
namespace {

constexpr std::size_t kValueColumn = 2;
constexpr std::array<std::uint8_t, 4> kNoValue{0xFF, 0x00, 0x00, 0x00};

bool IsLinkLost(const base::Failure& failure) {
  static constexpr std::array kNumbers{diag::kSessionLost, diag::kNoAnswer, diag::kInitialisationLost,
                                       diag::kCommunicationEnded, diag::kTesterPresentUnanswered};
  return std::find(kNumbers.begin(), kNumbers.end(), failure.Number()) != kNumbers.end();
}

void AppendError(base::ByteBuffer& reply, const base::Failure& failure) {
  protocol::AppendErrorRecord(reply, failure.Description(), failure.Number());
}

}  // namespace

OnlineValues::OnlineValues(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis,
                           Acquisition& acquisition, host::ListView& data_view)
    : console_(console), diagnosis_(diagnosis), acquisition_(acquisition), data_view_(data_view) {}

void OnlineValues::AttachTo(protocol::Dispatcher& dispatcher) {
  dispatcher.Attach(protocol::CommandCode::kGetOnlineValue, [this](base::ByteView, base::ByteBuffer& reply) {
    return GetOnlineValue(reply) ? protocol::kSuccess : protocol::kError;
  });
}

bool OnlineValues::GetOnlineValue(base::ByteBuffer& reply) {
  const auto items = acquisition_.Items();
  if (!items) {
    protocol::AppendWord(reply, 0);
    return true;
  }
  const Session session = diagnosis_.RequireSession();
  const auto ecu = acquisition_.CurrentEcu();
  const auto requests = acquisition_.RequestsToExecute();
  if (const auto failed = ExecuteUntilFailure(session, *requests)) {
    if (!IsLinkLost(failed->failure)) {
      AppendError(reply, failed->failure);
      console_.Line("GetOnlineValue error : Function='" + ecu->Function() + "' Request='" + failed->name +
                    "'  Error=" + failed->failure.Description());
      return false;
    }
    if (!Reinitialise(session, reply)) return false;
    ExecuteAll(session, *requests);
  }
  AppendValues(*items, reply);
  if (show_value_) ShowValues(items);
  return true;
}

std::optional<OnlineValues::FailedRequest> OnlineValues::ExecuteUntilFailure(
    const Session& session, const Acquisition::Requests& requests) {
  for (const auto& request : requests) {
    try {
      request->Execute();
    } catch (const base::Failure& failure) {
      RequireCurrent(session);
      return FailedRequest{request->Name(), failure};
    }
    RequireCurrent(session);
  }
  return std::nullopt;
}

void OnlineValues::ExecuteAll(const Session& session, const Acquisition::Requests& requests) {
  for (const auto& request : requests) {
    try {
      request->Execute();
    } catch (const base::Failure&) {
      // After the repetition the values are answered as they then stand.
      RequireCurrent(session);
      continue;
    }
    RequireCurrent(session);
  }
}

bool OnlineValues::Reinitialise(const Session& session, base::ByteBuffer& reply) {
  for (const auto& ecu : session->Ecus()) {
    if (ecu->Function() == diag::kCanFunction) continue;
    console_.Line("GetOnlineValue : Reinit Ecu " + ecu->Name());
    try {
      ecu->Reinitialise();
    } catch (const base::Failure& failure) {
      RequireCurrent(session);
      AppendError(reply, failure);
      console_.Line("GetOnlineValue Function='" + ecu->Function() + "' Name='" + ecu->Name() +
                    "'  Init Error=" + failure.Description());
      return false;
    }
    RequireCurrent(session);
  }
  return true;
}

// Without this, a command whose client is gone would go on working on a host's session.
void OnlineValues::RequireCurrent(const Session& session) const {
  base::Errand::RequireWanted();
  if (diagnosis_.Session() != session || !acquisition_.Items()) {
    throw base::Failure(diag::kSessionLost, "The session was closed while values were read");
  }
}

void OnlineValues::AppendValues(const Acquisition::DataItems& items, base::ByteBuffer& reply) {
  reply.Reserve(reply.Length() + 2 + 4 * static_cast<std::size_t>(items.Count()));
  protocol::AppendWord(reply, items.Count());
  const bool trace = console_.DebugTrace();
  for (const auto& item : items) {
    if (trace) console_.Line("Data : " + item->Name() + " = " + item->Value().ToText());
    if (const std::optional<float> value = item->Value().ToSingle()) {
      protocol::AppendReal(reply, *value);
    } else {
      reply.Append(base::ByteView(kNoValue));
    }
  }
}

// A client reads far more often than a list is repainted, and the texts cost more than the values.
void OnlineValues::ShowValues(const std::shared_ptr<const Acquisition::DataItems>& items) {
  data_view_.SetCellsWhenShown([&view = data_view_, items] {
    std::size_t row = 0;
    for (const auto& item : *items) view.SetCell(row++, kValueColumn, item->Text());
  });
}

}  // namespace korval::model
