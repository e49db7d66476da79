// SPDX-License-Identifier: MIT
#include "ecu/simulation/DtcMemory.h"

#include <algorithm>
#include <utility>

namespace korval::ecu {
namespace {

constexpr std::size_t kMostDtcs = 255;

}  // namespace

DtcMemory::DtcMemory(std::vector<SimulationDescription::Dtc> dtcs, std::size_t per_answer)
    : dtcs_(std::move(dtcs)), per_answer_(per_answer) {
  if (dtcs_.size() > kMostDtcs) dtcs_.resize(kMostDtcs);
}

void DtcMemory::AppendRecords(bool continuation, base::ByteBuffer& answer) {
  if (!continuation) next_ = 0;
  answer.Append(static_cast<std::uint8_t>(dtcs_.size()));
  const std::size_t end = std::min(next_ + per_answer_, dtcs_.size());
  for (; next_ < end; ++next_) {
    const SimulationDescription::Dtc& dtc = dtcs_[next_];
    answer.Append(static_cast<std::uint8_t>(dtc.code >> 8));
    answer.Append(static_cast<std::uint8_t>(dtc.code & 0xFF));
    answer.Append(dtc.status);
  }
}

void DtcMemory::Clear() {
  dtcs_.clear();
  next_ = 0;
}

}  // namespace korval::ecu
