// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "diag/viator3.h"

namespace korval::tests {

/// A data item whose value a test sets. One that is not writable is read only; one that refuses, refuses
/// every value.
class FakeDataItem : public viator3::DataItem {
 public:
  explicit FakeDataItem(std::string name, base::Variant initial = {}, bool is_writable = false)
      : value(std::move(initial)), writable(is_writable), name_(std::move(name)) {}

  const std::string& Name() const override { return name_; }
  base::Variant Value() const override { return value; }
  std::string Text() const override { return text.empty() ? value.ToText() : text; }
  std::string Unit() const override { return unit; }
  void SetValue(const base::Variant& new_value) override {
    RequireWritable();
    value = new_value;
  }
  void SetText(const std::string& new_text) override {
    RequireWritable();
    text = new_text;
  }
  std::shared_ptr<viator3::Request> OwningRequest() const override { return request.lock(); }

  base::Variant value;
  std::string text;
  std::string unit;
  bool writable;
  bool refuses = false;
  std::weak_ptr<viator3::Request> request;

 private:
  void RequireWritable() const {
    if (!writable) throw base::Failure(2011, "read only");
    if (refuses) throw base::Failure(2012, "value refused");
  }

  std::string name_;
};

}  // namespace korval::tests
