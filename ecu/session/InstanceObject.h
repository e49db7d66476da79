// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "diag/viator3.h"
#include "ecu/description/ErrorTable.h"

namespace korval::ecu {

/// By-name access to the values of one ECU object.
class InstanceObject : public viator3::InstanceObject {
 public:
  explicit InstanceObject(std::shared_ptr<const ErrorTable> errors) : errors_(std::move(errors)) {}

  void SetProtocol(std::shared_ptr<viator3::Ecu> ecu) override { ecu_ = std::move(ecu); }
  void SetNameResolver(NameResolver resolver) override { resolver_ = std::move(resolver); }
  base::Task<base::Variant> Get(std::string name) override;
  base::Task<void> Set(std::string name, base::Variant value) override;

 private:
  enum class Side { kAnswer, kRequest };
  using Item = std::shared_ptr<viator3::DataItem>;

  /// Of the item that a short name stands for; else the name itself.
  std::string ItemName(const std::string& name) const;
  Item Find(const std::string& name, Side side) const;

  std::shared_ptr<const ErrorTable> errors_;
  std::shared_ptr<viator3::Ecu> ecu_;
  NameResolver resolver_;
};

}  // namespace korval::ecu
