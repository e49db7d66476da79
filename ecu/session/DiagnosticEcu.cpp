// SPDX-License-Identifier: MIT
#include "ecu/session/DiagnosticEcu.h"

#include <utility>

#include "ecu/description/ErrorNumbers.h"
#include "ecu/session/Request.h"

namespace korval::ecu {

DiagnosticEcu::DiagnosticEcu(const std::shared_ptr<LinkHost>& host,
                             std::shared_ptr<const EcuDescription> description)
    : errors_(host->SharedErrors()),
      description_(std::move(description)),
      connection_(std::make_shared<EcuConnection>(host, description_)) {}

void DiagnosticEcu::Send(const base::ByteBuffer& request, base::ByteBuffer& answer) {
  if (request.Empty()) throw errors_->MakeFailure(kValueRefused, "a request has at least one byte");
  connection_->Exchange(request.View(), answer);
}

std::shared_ptr<viator3::DataItem> DiagnosticEcu::FindAnswerItem(const std::string& name) {
  return Table().FindAnswerItem(name);
}

void DiagnosticEcu::LoadMessaging(const std::string& path) {
  throw errors_->MakeFailure(
      kUnknownName, "CAN messaging belongs to the function CAN, not to " + Function() + " (" + path + ")");
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
