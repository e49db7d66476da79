// SPDX-License-Identifier: MIT
#include "ecu/kline/PacedSender.h"

#include <utility>

namespace korval::ecu {

void PacedSender::Start(base::ByteBuffer bytes, base::TimePoint now, base::Duration byte_time,
                        base::Duration gap) {
  bytes_ = std::move(bytes);
  sent_ = 0;
  byte_time_ = byte_time;
  gap_ = gap;
  due_ = now;
}

base::ByteView PacedSender::Take(base::TimePoint now) {
  if (IsDone() || now < due_) return {};
  const std::size_t count = gap_.count() == 0 ? bytes_.Length() - sent_ : 1;
  const base::ByteView bytes = bytes_.View(sent_, count);
  sent_ += count;
  last_count_ = count;
  Written(now);
  return bytes;
}

void PacedSender::Written(base::TimePoint now) {
  end_ = now + static_cast<std::int64_t>(last_count_) * byte_time_;
  due_ = end_ + gap_;
}

}  // namespace korval::ecu
