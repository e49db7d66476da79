// SPDX-License-Identifier: MIT
#include "ecu/session/DataItem.h"

#include <utility>

#include "base/Failure.h"
#include "ecu/description/ErrorNumbers.h"
#include "ecu/description/ItemCoding.h"

namespace korval::ecu {

DataItem::DataItem(Side side, const ItemDescription& item, std::shared_ptr<RequestMessages> messages,
                   std::weak_ptr<viator3::Request> owner)
    : side_(side), item_(item), messages_(std::move(messages)), owner_(std::move(owner)) {}

base::Variant DataItem::Value() const { return DecodeItem(item_, Message()); }

std::string DataItem::Text() const { return DecodeText(item_, Message()); }

void DataItem::SetValue(const base::Variant& value) { EncodeItem(item_, value, RequireWritable()); }

void DataItem::SetText(const std::string& text) { EncodeText(item_, text, RequireWritable()); }

base::ByteBuffer& DataItem::RequireWritable() {
  if (side_ == Side::kSent) return messages_->sent;
  throw base::Failure(
      kReadOnly, "Read only: " + item_.name + " is part of the answer to " + messages_->description->name);
}

}  // namespace korval::ecu
