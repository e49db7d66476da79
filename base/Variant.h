// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace korval::base {

struct Null {
  friend bool operator==(const Null&, const Null&) = default;
};
/// Days since 1899-12-30, with the time of day as the fraction.
struct Date {
  double days = 0;
  friend bool operator==(const Date&, const Date&) = default;
};
/// A decimal amount, counted in ten-thousandths.
struct Currency {
  std::int64_t ten_thousandths = 0;
  friend bool operator==(const Currency&, const Currency&) = default;
};
struct Object {
  std::shared_ptr<void> reference;
  friend bool operator==(const Object&, const Object&) = default;
};
struct ErrorValue {
  std::int32_t number = 0;
  friend bool operator==(const ErrorValue&, const ErrorValue&) = default;
};
class Variant;
struct Array {
  std::shared_ptr<const Variant[]> elements;
  friend bool operator==(const Array&, const Array&) = default;
};

/// The tagged value in which the diagnostic-session library gives and takes an ECU's values. The type it
/// carries decides how a command answers it, so conversions happen only where a command asks for one.
class Variant {
 public:
  using Storage = std::variant<std::monostate, Null, std::int16_t, std::int32_t, float, double, bool,
                               std::uint8_t, std::string, Date, Currency, Object, Array, ErrorValue>;
  /// In the order of Storage.
  enum class Type {
    kEmpty,
    kNull,
    kInt16,
    kInt32,
    kSingle,
    kDouble,
    kBoolean,
    kByte,
    kString,
    kDate,
    kCurrency,
    kObject,
    kArray,
    kError
  };

  Variant() = default;
  template <typename Value>
  requires(!std::same_as<std::decay_t<Value>, Variant>) &&
      std::constructible_from<Storage, std::in_place_type_t<std::decay_t<Value>>, Value> Variant(
          Value&& value)
      : storage_(std::in_place_type<std::decay_t<Value>>, std::forward<Value>(value)) {}
  Variant(const char* text) : storage_(std::string(text)) {}

  Type TypeOf() const noexcept { return static_cast<Type>(storage_.index()); }
  bool IsEmpty() const noexcept { return TypeOf() == Type::kEmpty; }
  /// 16- or 32-bit integer, single, double, boolean or byte.
  bool IsNumeric() const noexcept { return TypeOf() >= Type::kInt16 && TypeOf() <= Type::kByte; }

  /// The alternative itself; none when the value is of another type.
  template <typename Value>
  const Value* As() const noexcept {
    return std::get_if<Value>(&storage_);
  }

  /// The value as a number: booleans are -1 and 0, a numeric string converts, dates and currency are
  /// their number; none for the rest.
  std::optional<double> ToDouble() const;
  /// As ToDouble, in single precision; none too when the magnitude does not fit.
  std::optional<float> ToSingle() const {
    // Inline for online values: an optional that is returned in memory costs more than the conversion.
    if (const double* number = As<double>()) return Narrowed(*number);
    if (const float* single = As<float>()) return *single;
    const std::optional<double> number = ToDouble();
    return number ? Narrowed(*number) : std::nullopt;
  }
  /// Default text form: numbers as in NumberText, booleans True and False, a string itself, "" for what
  /// has no text.
  std::string ToText() const;

  friend bool operator==(const Variant&, const Variant&) = default;

 private:
  static std::optional<float> Narrowed(double number) {
    const auto single = static_cast<float>(number);
    if (std::isinf(single) && !std::isinf(number)) return std::nullopt;
    return single;
  }

  Storage storage_;
};

}  // namespace korval::base
