// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/ByteBuffer.h"

namespace korval::ecu {

/// What was heard on the line since the last step began, for the text of a failure.
class HeardBytes {
 public:
  void Append(base::ByteView bytes);
  void Clear() { bytes_.Clear(); }
  bool Empty() const { return bytes_.Empty(); }
  /// As in " (heard: 8110F18103)".
  std::string Text() const;

 private:
  base::ByteBuffer bytes_;
};

}  // namespace korval::ecu
