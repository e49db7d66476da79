// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "diag/viator3.h"
#include "ecu/description/ErrorTable.h"
#include "ecu/description/RequestDescription.h"

namespace korval::ecu {

/// A request's bytes as they stand, and the last answer (empty: none yet). Items decode from them when they
/// are asked.
struct RequestMessages {
  std::shared_ptr<const RequestDescription> description;
  std::shared_ptr<const ErrorTable> errors;
  base::ByteBuffer sent;
  base::ByteBuffer answer;
};

class DataItem : public viator3::DataItem {
 public:
  enum class Side { kReceived, kSent };

  /// `item` is one of the description's.
  DataItem(Side side, const ItemDescription& item, std::shared_ptr<RequestMessages> messages,
           std::weak_ptr<viator3::Request> owner);

  const ItemDescription& Description() const { return item_; }
  /// Whether it is part of the answer among these messages.
  bool IsReceivedWith(const RequestMessages& messages) const {
    return side_ == Side::kReceived && messages_.get() == &messages;
  }

  const std::string& Name() const override { return item_.name; }
  base::Variant Value() const override;
  std::string Text() const override;
  std::string Unit() const override { return item_.unit; }
  void SetValue(const base::Variant& value) override;
  void SetText(const std::string& text) override;
  std::shared_ptr<viator3::Request> OwningRequest() const override { return owner_.lock(); }

 private:
  base::ByteView Message() const {
    return (side_ == Side::kSent ? messages_->sent : messages_->answer).View();
  }
  void Write(const std::function<void(base::ByteBuffer&)>& encode);

  Side side_;
  const ItemDescription& item_;
  std::shared_ptr<RequestMessages> messages_;
  std::weak_ptr<viator3::Request> owner_;
};

}  // namespace korval::ecu
