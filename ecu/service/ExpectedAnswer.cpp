// SPDX-License-Identifier: MIT
#include "ecu/service/ExpectedAnswer.h"

#include <algorithm>

namespace korval::ecu {

ExpectedAnswer::ExpectedAnswer(base::ByteView request, std::size_t repeated) {
  std::copy_n(request.begin(), std::min(request.size(), head_.size()), head_.begin());
  repeated_ = std::min({repeated, request.size() - 1, head_.size() - 1});
}

bool ExpectedAnswer::IsPositive(base::ByteView message) const {
  if (!IsPositiveTo(head_[0], message)) return false;
  const std::size_t compared = std::min(repeated_, message.size() - 1);
  return std::equal(message.begin() + 1, message.begin() + 1 + static_cast<std::ptrdiff_t>(compared),
                    head_.begin() + 1);
}

}  // namespace korval::ecu
