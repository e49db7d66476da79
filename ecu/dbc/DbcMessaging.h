// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "ecu/description/MessagingFile.h"

namespace korval::ecu {

/// The messages of a DBC file's content as frames. Such a file says nothing of diagnostics and of the bit
/// rate.
MessagingFile ReadDbc(std::string_view content);

}  // namespace korval::ecu
