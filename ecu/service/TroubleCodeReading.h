// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "base/ByteBuffer.h"

namespace korval::ecu {

struct TroubleCode {
  std::uint32_t number;
  std::uint8_t status;

  bool operator==(const TroubleCode&) const = default;
};

/// How trouble codes are read, request by request. It knows no link: whoever reads sends NextRequest until
/// it is empty, and hands each positive answer to Take.
class TroubleCodeReading {
 public:
  virtual ~TroubleCodeReading() = default;
  /// Empty when all have been read. Valid until the next Take.
  virtual base::ByteView NextRequest() const = 0;
  /// Takes the positive answer to NextRequest, which is not empty. Raises Failure 2002 for one that is too
  /// short; the codes in front of its end count, and there is no next request.
  virtual void Take(base::ByteView answer) = 0;
  /// How many there are in all, as the first answer says; 0 before it.
  virtual std::size_t Announced() const = 0;
  /// Those that have come so far.
  virtual const std::vector<TroubleCode>& Codes() const = 0;
};

}  // namespace korval::ecu
