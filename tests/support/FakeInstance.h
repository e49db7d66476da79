// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "base/Job.h"
#include "diag/viator3.h"

namespace korval::tests {

/// An instance object with plain named values. A short name stands for the name that the
/// resolver gives.
class FakeInstance : public viator3::InstanceObject {
 public:
  void SetProtocol(std::shared_ptr<viator3::Ecu> ecu) override {
    if (on_set_protocol) on_set_protocol();
    protocol = std::move(ecu);
  }
  void SetNameResolver(NameResolver new_resolver) override { resolver = std::move(new_resolver); }
  base::Task<base::Variant> Get(std::string name) override {
    co_await base::Blocking([this] {
      if (on_access) on_access();
    });
    co_return std::as_const(values).at(Resolved(name));
  }
  base::Task<void> Set(std::string name, base::Variant value) override {
    co_await base::Blocking([this] {
      if (on_access) on_access();
    });
    values[Resolved(name)] = value;
  }

  std::map<std::string, base::Variant> values;
  std::shared_ptr<viator3::Ecu> protocol;
  NameResolver resolver;
  std::function<void()> on_set_protocol;
  std::function<void()> on_access;

 private:
  std::string Resolved(const std::string& name) const {
    std::string resolved = resolver ? resolver(name) : std::string();
    if (resolved.empty()) resolved = name;
    if (!values.contains(resolved)) throw base::Failure(2010, "unknown name " + name);
    return resolved;
  }
};

}  // namespace korval::tests
