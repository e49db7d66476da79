// SPDX-License-Identifier: MIT
#include "ecu/session/DiagnosticEcu.h"

#include <utility>

#include "base/ErrorNumbers.h"
#include "ecu/kwp2000/Kwp2000Dialect.h"
#include "ecu/service/ReadTroubleCodes.h"
#include "ecu/session/Request.h"

namespace korval::ecu {

DiagnosticEcu::DiagnosticEcu(const std::shared_ptr<LinkHost>& host,
                             std::shared_ptr<const EcuDescription> description)
    : errors_(host->SharedErrors()),
      description_(std::move(description)),
      connection_(std::make_shared<EcuConnection>(host, description_)) {}

viator3::Features DiagnosticEcu::Features() const {
  const bool on_can = description_->Function().protocol == "DiagOnCAN";
  return {.initialisation = true,
          .identification = on_can || description_->Function().protocol == "KWP2000",
          .needs_messaging = on_can};
}

// The operations hold the connection: the object may go while they wait.

base::Task<void> DiagnosticEcu::Initialise() {
  const auto connection = connection_;
  co_await connection->Initialise();
}

base::Task<void> DiagnosticEcu::Reinitialise() {
  const auto connection = connection_;
  co_await connection->Reinitialise();
}

base::Task<void> DiagnosticEcu::Send(const base::ByteBuffer& request, base::ByteBuffer& answer) {
  const auto connection = connection_;
  if (request.Empty()) throw errors_->MakeFailure(kValueRefused, "a request has at least one byte");
  co_await connection->Exchange(request.View(), answer);
}

base::Task<viator3::Exchange> DiagnosticEcu::Ask(base::ByteBuffer request) {
  const auto connection = connection_;
  viator3::Exchange exchange{std::move(request), {}, {}};
  try {
    co_await connection->Exchange(exchange.request.View(), exchange.answer);
  } catch (const base::Failure& failure) {
    exchange.failure = failure;
  }
  co_return exchange;
}

base::Task<void> DiagnosticEcu::ReadTroubleCodes(viator3::TroubleCodeListener& listener) {
  return ecu::ReadTroubleCodes(
      Kwp2000().ReadTroubleCodes(), listener,
      [self = shared_from_this()](base::ByteBuffer request) { return self->Ask(std::move(request)); });
}

base::Task<viator3::Exchange> DiagnosticEcu::ReadIdentification() { return Ask(Kwp2000().Identification()); }

std::shared_ptr<viator3::DataItem> DiagnosticEcu::FindAnswerItem(const std::string& name) {
  return Table().FindAnswerItem(name);
}

base::Task<void> DiagnosticEcu::LoadMessaging(std::string path) {
  throw errors_->MakeFailure(
      kUnknownName, "CAN messaging belongs to the function CAN, not to " + Function() + " (" + path + ")");
  co_return;
}

RequestTable& DiagnosticEcu::Table() {
  if (!table_) {
    Requests requests;
    requests.reserve(description_->Requests().size());
    for (const RequestDescription& request : description_->Requests()) {
      requests.push_back(Request::Create(std::shared_ptr<const RequestDescription>(description_, &request),
                                         connection_, errors_));
    }
    table_.emplace(std::move(requests));
  }
  return *table_;
}

}  // namespace korval::ecu
