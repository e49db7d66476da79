// SPDX-License-Identifier: MIT
#include "ecu/session/InstanceObject.h"

#include "base/ErrorNumbers.h"
#include "base/Failure.h"
#include "ecu/session/FrameRequest.h"

namespace korval::ecu {
namespace {

std::shared_ptr<viator3::DataItem> FindSentItem(viator3::Ecu& ecu, const std::string& name) {
  for (const auto& request : ecu.RequestList()) {
    for (const auto& item : request->Parameters()) {
      if (item->Name() == name) return item;
    }
  }
  return nullptr;
}

// A short name with the item that it stands for.
std::string Shown(const std::string& name, const std::string& item_name) {
  return name == item_name ? name : item_name + " (short name " + name + ")";
}

std::shared_ptr<viator3::Request> RequestOf(const viator3::DataItem& item, const ErrorTable& errors) {
  auto request = item.OwningRequest();
  if (!request) throw errors.MakeFailure(kLinkLost, "the request of " + item.Name() + " is gone");
  return request;
}

}  // namespace

// The object may be destroyed in the waits.

base::Task<base::Variant> InstanceObject::Get(std::string name) {
  const std::string item_name = ItemName(name);
  const Item item = Find(item_name, Side::kAnswer);
  if (!item) throw errors_->MakeFailure(kUnknownName, Shown(name, item_name) + " is in no answer of the ECU");
  const auto request = RequestOf(*item, *errors_);
  if (const auto frame = std::dynamic_pointer_cast<FrameRequest>(request)) co_await frame->Await();
  co_await request->Execute();
  co_return item->Value();
}

base::Task<void> InstanceObject::Set(std::string name, base::Variant value) {
  const std::string item_name = ItemName(name);
  const Item item = Find(item_name, Side::kRequest);
  if (!item) {
    const bool readable = Find(item_name, Side::kAnswer) != nullptr;
    if (readable) throw errors_->MakeFailure(kReadOnly, "no request writes " + Shown(name, item_name));
    throw errors_->MakeFailure(kUnknownName, Shown(name, item_name) + " is in no request of the ECU");
  }
  if (const std::string* text = value.As<std::string>()) {
    item->SetText(*text);
  } else {
    item->SetValue(value);
  }
  const auto request = RequestOf(*item, *errors_);
  co_await request->Execute();
}

std::string InstanceObject::ItemName(const std::string& name) const {
  const std::string resolved = resolver_ ? resolver_(name) : std::string();
  return resolved.empty() ? name : resolved;
}

InstanceObject::Item InstanceObject::Find(const std::string& name, Side side) const {
  if (!ecu_) throw errors_->MakeFailure(kUnknownName, "the object has no ECU yet, set its property protocol");
  return side == Side::kAnswer ? ecu_->FindAnswerItem(name) : FindSentItem(*ecu_, name);
}

}  // namespace korval::ecu
