// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <utility>

namespace korval::ecu {

/// A value that is given, or made when it is first asked for. What is made stays where it is. For one thread.
template <typename Value>
class Lazy {
 public:
  using Make = std::function<Value()>;

  Lazy() : value_(std::in_place) {}
  explicit Lazy(Value value) : value_(std::move(value)) {}
  /// `make` owns what it reads from. It is called once, and again when it has thrown.
  explicit Lazy(Make make) : make_(std::move(make)) {}

  const Value& Get() const {
    if (!value_) value_.emplace(make_());
    return *value_;
  }

 private:
  Make make_;
  mutable std::optional<Value> value_;
};

}  // namespace korval::ecu
