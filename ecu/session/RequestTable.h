// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "diag/viator3.h"

namespace korval::ecu {

/// The requests of an ECU object in the order of the file, and the items of their answers by name.
class RequestTable {
 public:
  explicit RequestTable(viator3::Ecu::Requests requests) : requests_(std::move(requests)) {}

  const viator3::Ecu::Requests& Requests() const { return requests_; }
  /// The first in the file; null when there is none. Case-sensitive.
  std::shared_ptr<viator3::DataItem> FindAnswerItem(const std::string& name);

 private:
  using Items = std::unordered_map<std::string_view, std::shared_ptr<viator3::DataItem>>;

  Items IndexAnswerItems() const;

  viator3::Ecu::Requests requests_;
  std::optional<Items> answer_items_;
};

}  // namespace korval::ecu
