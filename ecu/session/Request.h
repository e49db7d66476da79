// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "diag/viator3.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/session/DataItem.h"
#include "ecu/session/EcuConnection.h"

namespace korval::ecu {

/// A request of an ECU function. Holds what it needs, so that it survives its session inside a wait. Its
/// items are made when they are first asked for.
class Request : public viator3::Request {
 public:
  static std::shared_ptr<Request> Create(std::shared_ptr<const RequestDescription> description,
                                         std::shared_ptr<EcuConnection> connection,
                                         std::shared_ptr<const ErrorTable> errors);

  const std::string& Name() const override { return messages_->description->name; }
  /// Raises 2002 for an answer shorter than the request's MinBytes; the items then keep their values. They
  /// have none after a request that is not answered.
  base::Task<void> Execute() override;
  const Items& Data() const override;
  const Items& Parameters() const override;
  std::unique_ptr<viator3::Singles> SinglesOf(
      std::span<const std::shared_ptr<viator3::DataItem>> items) const override;

 private:
  Request(std::shared_ptr<const RequestDescription> description, std::shared_ptr<EcuConnection> connection,
          std::shared_ptr<const ErrorTable> errors);

  std::weak_ptr<Request> self_;
  std::shared_ptr<RequestMessages> messages_ = std::make_shared<RequestMessages>();
  std::shared_ptr<EcuConnection> connection_;
  std::shared_ptr<const ErrorTable> errors_;
  mutable std::optional<Items> parameters_;
  mutable std::optional<Items> data_;
};

}  // namespace korval::ecu
