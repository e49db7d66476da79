// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace korval::base {

/// A text of somebody else's as it may be shown: each control character (U+0000 to U+001F, U+007F to U+009F)
/// and each byte that is not valid UTF-8 stands as \x and two hexadecimal digits, so that it neither steers a
/// terminal nor feigns a line. What is visible stays as it is, the backslash too.
std::string VisibleText(std::string_view utf8);

}  // namespace korval::base
