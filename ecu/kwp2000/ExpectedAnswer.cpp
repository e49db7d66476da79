// SPDX-License-Identifier: MIT
#include "ecu/kwp2000/ExpectedAnswer.h"

#include <algorithm>

namespace korval::ecu {
namespace {

constexpr std::uint8_t kResponsePending = 0x78;
constexpr std::size_t kNegativeLength = 3;

// How many bytes behind the service the positive answer repeats (ISO 14230-3 clauses 7 and 9).
std::size_t RepeatedBytes(std::uint8_t service) {
  switch (service) {
    case 0x21:  // local identifier
    case 0x30:
    case 0x3B:
      return 1;
    case 0x22:  // common identifier
    case 0x2E:
    case 0x2F:
      return 2;
    default:
      return 0;
  }
}

}  // namespace

ExpectedAnswer::ExpectedAnswer(base::ByteView request) {
  std::copy_n(request.begin(), std::min(request.size(), head_.size()), head_.begin());
  repeated_ = std::min(RepeatedBytes(head_[0]), request.size() - 1);
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
