// SPDX-License-Identifier: MIT
#include "fuzz/CheckedReply.h"

#include "fuzz/Require.h"
#include "protocol/Frame.h"

namespace korval::fuzz {

void RequireReply(base::ByteView bytes) {
  constexpr std::size_t kShortestReply = 8;
  const base::ByteBuffer frame(bytes);
  Require(frame.Length() >= kShortestReply, "a reply has a length, a code, a status and a checksum");
  Require(frame.Word(protocol::kLengthOffset) == frame.Length(), "a reply is one frame");
  Require(protocol::IsChecksumValid(frame), "a reply's checksum is right");
}

}  // namespace korval::fuzz
