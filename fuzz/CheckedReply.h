// SPDX-License-Identifier: MIT
#pragma once

#include "base/ByteBuffer.h"

namespace korval::fuzz {

/// Requires that `bytes` are one whole, valid reply frame.
void RequireReply(base::ByteView bytes);

}  // namespace korval::fuzz
