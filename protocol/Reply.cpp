// SPDX-License-Identifier: MIT
#include "protocol/Reply.h"

#include <algorithm>

#include "base/AnsiText.h"
#include "protocol/FieldCodec.h"
#include "protocol/Frame.h"

namespace korval::protocol {
namespace {

// The start of a text that needs no more than `count` characters.
std::string_view Clipped(std::string_view text, std::size_t count) {
  std::size_t position = 0;
  while (position < text.size() && count > 0) {
    base::NextCharacter(text, position);
    --count;
  }
  return text.substr(0, position);
}

}  // namespace

void AppendErrorRecord(base::ByteBuffer& reply, const std::string& message, std::int32_t code) {
  static constexpr std::size_t kHeadOfRecord = 4;  // the code and the string's length
  AppendWord(reply, code);
  const std::size_t used = std::min(reply.Length() - 2 + kHeadOfRecord, kMaxReplyData);
  AppendString(reply, Clipped(message, kMaxReplyData - used));
}

std::int32_t ReplyError(host::TraceConsole& console, base::ByteBuffer& reply, const std::string& message,
                        std::int32_t code) {
  if (console.DebugTrace()) console.Line(message);
  AppendErrorRecord(reply, message, code);
  return kError;
}

}  // namespace korval::protocol
