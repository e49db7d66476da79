// SPDX-License-Identifier: MIT
#include "ecu/session/RequestTable.h"

namespace korval::ecu {

std::shared_ptr<viator3::DataItem> RequestTable::FindAnswerItem(const std::string& name) {
  if (!answer_items_) answer_items_ = IndexAnswerItems();
  const auto found = answer_items_->find(name);
  return found == answer_items_->end() ? nullptr : found->second;
}

RequestTable::Items RequestTable::IndexAnswerItems() const {
  Items items;
  for (const auto& request : requests_) {
    const auto& data = request->Data();
    const std::size_t received = data.size() - request->Parameters().size();
    for (std::size_t i = 0; i < received; ++i) items.emplace(data[i]->Name(), data[i]);
  }
  return items;
}

}  // namespace korval::ecu
