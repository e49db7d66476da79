// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "base/Job.h"
#include "diag/viator3.h"
#include "tests/support/FakeDataItem.h"

namespace korval::tests {

/// A request that counts its executions and does what the test says; a test plays events inside the wait by
/// doing them in `on_execute`.
class FakeRequest : public viator3::Request, public std::enable_shared_from_this<FakeRequest> {
 public:
  explicit FakeRequest(std::string name) : name_(std::move(name)) {}

  std::shared_ptr<FakeDataItem> AddAnswerItem(const std::string& name, base::Variant value = {}) {
    auto item = std::make_shared<FakeDataItem>(name, std::move(value));
    item->request = weak_from_this();
    data_.push_back(item);
    return item;
  }
  std::shared_ptr<FakeDataItem> AddParameter(const std::string& name, base::Variant value = {}) {
    auto item = std::make_shared<FakeDataItem>(name, std::move(value), true);
    item->request = weak_from_this();
    data_.push_back(item);
    parameters_.push_back(item);
    return item;
  }

  const std::string& Name() const override { return name_; }
  base::Task<void> Execute() override {
    const auto held = shared_from_this();
    ++executions;
    co_await base::Blocking([this] {
      if (on_execute) on_execute();
    });
  }
  const Items& Data() const override { return data_; }
  const Items& Parameters() const override { return parameters_; }

  std::function<void()> on_execute;
  int executions = 0;

 private:
  std::string name_;
  Items data_;
  Items parameters_;
};

}  // namespace korval::tests
