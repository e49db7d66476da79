// SPDX-License-Identifier: MIT
#include "ecu/session/EcuConnection.h"

#include <utility>

namespace korval::ecu {

EcuConnection::EcuConnection(std::shared_ptr<LinkHost> host, std::shared_ptr<const EcuDescription> ecu)
    : host_(std::move(host)), ecu_(std::move(ecu)), function_(ecu_, &ecu_->Function()) {}

std::shared_ptr<ServiceChannel> EcuConnection::Open() {
  if (!channel_ || channel_->IsClosed()) channel_ = host_->OpenChannel(ecu_);
  return channel_;
}

}  // namespace korval::ecu
