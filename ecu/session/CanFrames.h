// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include <pugixml.hpp>

#include "base/ByteBuffer.h"
#include "ecu/description/ErrorTable.h"

namespace korval::ecu {

struct FrameToSend {
  std::int32_t identifier = 0;
  base::ByteBuffer data;  ///< 0 to 8 bytes
};

/// The frames of a "can" document: under each "x" an "i" (identifier in signed decimal), then an "s" with a
/// "d" (data in hexadecimal). Raises Failure 2012 for an identifier or data that are none.
std::vector<FrameToSend> ReadCanFrames(const pugi::xml_document& document, const ErrorTable& errors);

}  // namespace korval::ecu
