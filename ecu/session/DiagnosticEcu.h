// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "diag/viator3.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/session/EcuConnection.h"
#include "ecu/session/RequestTable.h"

namespace korval::ecu {

/// The ECU function of an ECU file.
class DiagnosticEcu : public viator3::Ecu, public std::enable_shared_from_this<DiagnosticEcu> {
 public:
  DiagnosticEcu(const std::shared_ptr<LinkHost>& host, std::shared_ptr<const EcuDescription> description);

  /// Whether this object serves that very file.
  bool Serves(const std::shared_ptr<const EcuDescription>& description) const {
    return description_ == description;
  }

  const std::string& Function() const override { return description_->Function().name; }
  const std::string& Name() const override { return description_->Function().ecu; }
  const std::string& Protocol() const override { return description_->Function().protocol; }
  bool Initialised() const override { return connection_->IsInitialised(); }
  viator3::Features Features() const override;
  base::Task<void> Initialise() override;
  base::Task<void> Reinitialise() override;
  base::Task<void> Send(const base::ByteBuffer& request, base::ByteBuffer& answer) override;
  const Requests& RequestList() override { return Table().Requests(); }
  const std::vector<std::string>& ReferenceData() override { return description_->ReferenceData(); }
  std::shared_ptr<viator3::DataItem> FindAnswerItem(const std::string& name) override;
  base::Task<void> LoadMessaging(std::string path) override;
  base::Task<void> ReadTroubleCodes(viator3::TroubleCodeListener& listener) override;
  base::Task<viator3::Exchange> ReadIdentification() override;

 private:
  base::Task<viator3::Exchange> Ask(base::ByteBuffer request);
  RequestTable& Table();

  std::shared_ptr<const ErrorTable> errors_;
  std::shared_ptr<const EcuDescription> description_;
  std::shared_ptr<EcuConnection> connection_;
  std::optional<RequestTable> table_;
};

}  // namespace korval::ecu
