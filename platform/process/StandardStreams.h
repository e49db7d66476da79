// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>
#include <system_error>

namespace korval::platform {

/// Standard streams that whoever started the program has closed: from now on writing to them fails. Without
/// this the next file or socket that is opened would take their place, and the trace go into it.
void HoldStandardStreams();

/// Writes the whole text to an open descriptor and waits for as long as that takes. The error that ended it,
/// if any.
std::error_code WriteAll(int descriptor, std::string_view text);

}  // namespace korval::platform
