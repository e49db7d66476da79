// SPDX-License-Identifier: MIT
#include "ecu/session/DataItem.h"

#include <utility>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/description/ItemCoding.h"
#include "ecu/description/ItemEncoding.h"

namespace korval::ecu {

DataItem::DataItem(Side side, const ItemDescription& item, std::shared_ptr<RequestMessages> messages,
                   std::weak_ptr<viator3::Request> owner)
    : side_(side), item_(item), messages_(std::move(messages)), owner_(std::move(owner)) {}

base::Variant DataItem::Value() const { return DecodeItem(item_, Message()); }

std::string DataItem::Text() const { return DecodeText(item_, Message()); }

void DataItem::SetValue(const base::Variant& value) {
  Write([&](base::ByteBuffer& message) { EncodeItem(item_, value, message); });
}

void DataItem::SetText(const std::string& text) {
  Write([&](base::ByteBuffer& message) { EncodeText(item_, text, message); });
}

void DataItem::Write(const std::function<void(base::ByteBuffer&)>& encode) {
  if (side_ != Side::kSent) {
    throw messages_->errors->MakeFailure(
        kReadOnly, item_.name + " is part of the answer to " + messages_->description->name);
  }
  try {
    encode(messages_->sent);
  } catch (const base::Failure& failure) {
    throw messages_->errors->MakeFailure(failure.Number(), failure.Description());
  }
}

}  // namespace korval::ecu
