// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "diag/viator3.h"
#include "ecu/description/MessagingFile.h"
#include "ecu/session/FrameRequest.h"
#include "ecu/session/LinkHost.h"
#include "ecu/session/RequestTable.h"

namespace korval::ecu {

/// The function "CAN": the cyclic frames of the messaging file, one request a frame or, of a frame with a
/// multiplexor, a value of it. There is no ECU behind it to initialise or to
/// send requests to.
class CanEcu : public viator3::Ecu {
 public:
  explicit CanEcu(std::shared_ptr<LinkHost> host) : host_(std::move(host)) {}

  bool MessagingLoaded() const { return messaging_loaded_; }

  const std::string& Function() const override { return name_; }
  const std::string& Name() const override { return name_; }
  const std::string& Protocol() const override { return name_; }
  bool Initialised() const override { return true; }
  viator3::Features Features() const override { return {.initialisation = false}; }
  base::Task<void> Initialise() override { co_return; }
  base::Task<void> Reinitialise() override { co_return; }
  base::Task<void> Send(const base::ByteBuffer& request, base::ByteBuffer& answer) override;
  const Requests& RequestList() override { return table_->Requests(); }
  const std::vector<std::string>& ReferenceData() override { return reference_data_; }
  std::shared_ptr<viator3::DataItem> FindAnswerItem(const std::string& name) override;
  /// Takes the place of the messaging loaded before, which stays when this one cannot be read. Frames that
  /// have not changed keep their requests.
  base::Task<void> LoadMessaging(std::string path) override;
  base::Task<void> ReadTroubleCodes(viator3::TroubleCodeListener& listener) override;
  base::Task<viator3::Exchange> ReadIdentification() override;

 private:
  using Frames = std::vector<std::shared_ptr<FrameRequest>>;

  base::Task<viator3::Exchange> Refuse(base::ByteBuffer request) const;
  base::Failure NoRequest(const base::ByteBuffer& request) const;
  Frames RequestsFor(const std::vector<MessagingFile::Frame>& frames) const;

  std::shared_ptr<LinkHost> host_;
  std::string name_ = "CAN";
  std::vector<std::string> reference_data_;
  bool messaging_loaded_ = false;
  Frames frames_;  // those of the table
  std::unique_ptr<RequestTable> table_ = std::make_unique<RequestTable>(Requests());
};

}  // namespace korval::ecu
