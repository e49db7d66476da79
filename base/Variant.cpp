// SPDX-License-Identifier: MIT
#include "base/Variant.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "base/NumberText.h"

namespace korval::base {
std::optional<double> Variant::ToDouble() const {
  return std::visit(
      [](const auto& value) -> std::optional<double> {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, bool>) {
          return value ? -1.0 : 0.0;
        } else if constexpr (std::is_arithmetic_v<Value>) {
          return static_cast<double>(value);
        } else if constexpr (std::is_same_v<Value, std::string>) {
          return ReadNumber(value);
        } else if constexpr (std::is_same_v<Value, Date>) {
          return value.days;
        } else if constexpr (std::is_same_v<Value, Currency>) {
          return static_cast<double>(value.ten_thousandths) / 10000.0;
        } else {
          return std::nullopt;
        }
      },
      storage_);
}

std::string Variant::ToText() const {
  return std::visit(
      [](const auto& value) -> std::string {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, bool>) {
          return value ? "True" : "False";
        } else if constexpr (std::is_same_v<Value, float>) {
          return SingleText(value);
        } else if constexpr (std::is_same_v<Value, double>) {
          return DoubleText(value);
        } else if constexpr (std::is_integral_v<Value>) {
          return std::to_string(value);
        } else if constexpr (std::is_same_v<Value, std::string>) {
          return value;
        } else if constexpr (std::is_same_v<Value, Date>) {
          return DoubleText(value.days);
        } else if constexpr (std::is_same_v<Value, Currency>) {
          return DoubleText(static_cast<double>(value.ten_thousandths) / 10000.0);
        } else if constexpr (std::is_same_v<Value, ErrorValue>) {
          return "Error " + std::to_string(value.number);
        } else {
          return {};
        }
      },
      storage_);
}

}  // namespace korval::base
