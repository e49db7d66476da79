// SPDX-License-Identifier: MIT
#include "ecu/kline/EchoFilter.h"

namespace korval::ecu {

void EchoFilter::Expect(base::ByteView sent) {
  sent_ = base::ByteBuffer(sent);
  matched_ = 0;
}

bool EchoFilter::Filter(base::ByteView received, base::ByteBuffer& rest) {
  for (std::size_t place = 0; place < received.size(); ++place) {
    const base::ByteView left = received.subspan(place);
    const std::uint8_t byte = left[0];
    const bool is_low_level = behind_low_ && byte == 0;
    behind_low_ = is_low_level;
    if (echo_ == Echo::kOff || matched_ == sent_.Length()) {
      rest.Append(left);
      return true;
    }
    if (byte == sent_.At(matched_)) {
      ++matched_;
      if (matched_ == sent_.Length()) echo_ = Echo::kOn;
    } else if (is_low_level) {
      continue;
    } else if (echo_ == Echo::kOn) {
      return false;
    } else {
      echo_ = Echo::kOff;
      rest.Append(sent_.View(0, matched_));
      rest.Append(left);
      return true;
    }
  }
  return true;
}

}  // namespace korval::ecu
