// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "base/ByteBuffer.h"
#include "host/trace/TraceConsole.h"

namespace korval::protocol {

/// Statuses that the server produces.
inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kError = 0xFFFF;
inline constexpr std::int32_t kNotProcessed = 0x2343;
inline constexpr std::int32_t kUnknownCommand = 0x5656;

/// Appends the error record: the code as a word, the message as a string, cut where the frame would grow too
/// long.
void AppendErrorRecord(base::ByteBuffer& reply, const std::string& message, std::int32_t code);

/// The shared error path of all commands: appends the error record, traces the message while debugging, and
/// returns kError.
std::int32_t ReplyError(host::TraceConsole& console, base::ByteBuffer& reply, const std::string& message,
                        std::int32_t code);

}  // namespace korval::protocol
