// SPDX-License-Identifier: MIT
#include "ecu/service/ExpectedAnswer.h"

#include <algorithm>

#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {

ExpectedAnswer::ExpectedAnswer(base::ByteView request, std::size_t repeated) {
  std::copy_n(request.begin(), std::min(request.size(), head_.size()), head_.begin());
  repeated_ = std::min({repeated, request.size() - 1, head_.size() - 1});
}

bool ExpectedAnswer::IsPositive(base::ByteView message) const {
  if (message[0] != static_cast<std::uint8_t>(head_[0] + kPositiveOffset)) return false;
  const std::size_t compared = std::min(repeated_, message.size() - 1);
  return std::equal(message.begin() + 1, message.begin() + 1 + static_cast<std::ptrdiff_t>(compared),
                    head_.begin() + 1);
}

bool ExpectedAnswer::IsNegative(base::ByteView message) const {
  return message.size() >= kNegativeLength && message[0] == kNegativeResponse && message[1] == head_[0];
}

bool ExpectedAnswer::IsPending(base::ByteView message) const {
  return IsNegative(message) && message[2] == kResponsePending;
}

}  // namespace korval::ecu
