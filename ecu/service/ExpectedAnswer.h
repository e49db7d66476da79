// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>

#include "base/ByteBuffer.h"
#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {

/// What the answer to one request looks like.
class ExpectedAnswer {
 public:
  /// `request` is not empty; a positive answer repeats so many bytes behind its service, 2 at most.
  ExpectedAnswer(base::ByteView request, std::size_t repeated);

  /// Of the request's service, and repeating the identifier that it names. Messages are not empty.
  bool IsPositive(base::ByteView message) const;
  bool IsNegative(base::ByteView message) const { return IsNegativeTo(Service(), message); }
  /// A negative answer that only asks for time (7F ss 78).
  bool IsPending(base::ByteView message) const { return IsPendingTo(Service(), message); }
  /// Service of the request.
  std::uint8_t Service() const { return head_[0]; }

 private:
  // The request's service, and the identifier that its positive answer repeats.
  std::array<std::uint8_t, 3> head_{};
  std::size_t repeated_ = 0;  // bytes of the identifier
};

}  // namespace korval::ecu
