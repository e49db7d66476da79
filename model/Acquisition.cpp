// SPDX-License-Identifier: MIT
#include "model/Acquisition.h"

#include <unordered_set>

#include "base/Failure.h"

namespace korval::model {

void Acquisition::Start(const std::shared_ptr<viator3::Ecu>& ecu) {
  if (current_ecu_) return;
  current_ecu_ = ecu;
  items_ = std::make_shared<DataItems>();
  requests_.reset();
}

bool Acquisition::Add(const std::string& value_name, const viator3::Ecu& ecu,
                      const std::shared_ptr<viator3::DataItem>& item) {
  if (!items_) throw base::Failure("No ECU object to acquire values from");
  if (items_->Contains(value_name)) return false;
  if (items_->Count() >= kMostItems) {
    throw base::Failure("Too many values chosen, at most " + std::to_string(kMostItems) +
                        " different ones in one session: send exit and init to start anew");
  }
  items_->Append(item, value_name);
  if (ecu.Function() == current_ecu_->Function()) carriers_.push_back(item->OwningRequest());
  requests_.reset();
  return true;
}

void Acquisition::Drop() {
  current_ecu_.reset();
  items_.reset();
  carriers_.clear();
  requests_.reset();
}

std::shared_ptr<const Acquisition::Requests> Acquisition::RequestsToExecute() {
  if (requests_) return requests_;
  const auto gathered = std::make_shared<Requests>();
  if (current_ecu_) {
    std::unordered_set<std::shared_ptr<viator3::Request>> chosen(carriers_.begin(), carriers_.end());
    chosen.erase(nullptr);
    const auto take = [&](const std::shared_ptr<viator3::Request>& request) {
      if (chosen.erase(request) > 0) gathered->push_back(request);
    };
    for (const auto& request : current_ecu_->RequestList()) take(request);
    for (const auto& request : carriers_) take(request);
  }
  requests_ = gathered;
  return requests_;
}

}  // namespace korval::model
