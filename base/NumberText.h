// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korval::base {

/// The one place where numbers become text: shortest decimal that reads back to the same number, a
/// decimal point whatever the locale, "E-05" and "E+20" for the very small and very large.
/// Single: E notation below 1E-04 and from 1E+07; double: below 1E-04 and from 1E+15.
std::string SingleText(float value);
std::string DoubleText(double value);

/// Reads a signed 32-bit decimal integer, blanks allowed around it; none for anything else.
std::optional<std::int32_t> ReadInteger(std::string_view text);
/// Reads a decimal number (sign, decimal point, E notation), blanks allowed around it; none for
/// anything else, "inf", "nan" and hexadecimal forms included.
std::optional<double> ReadNumber(std::string_view text);

}  // namespace korval::base
