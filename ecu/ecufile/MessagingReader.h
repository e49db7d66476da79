// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "ecu/description/MessagingFile.h"

namespace korval::ecu {

/// Reads an XML messaging file, or a DBC file by its ending, by its full path. Raises Failure when it cannot
/// be read or is none, and for a data item that lies outside its frame.
MessagingFile LoadMessagingFile(const std::string& path);

}  // namespace korval::ecu
