// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "ecu/ecufile/Attribute.h"

namespace korval::tests {

/// Digits of the largest hexadecimal number.
std::size_t HexDigits(std::int32_t highest);
/// An attribute's default and range, in the words of docs/ecu-file.md; none where the page has to say it
/// in words of its own.
std::optional<std::string> DefaultText(const ecu::Attribute& rule);
std::optional<std::string> RangeText(const ecu::Attribute& rule);
/// Both, as far as there are any, in one sentence.
std::string Described(const ecu::Attribute& rule);

}  // namespace korval::tests
