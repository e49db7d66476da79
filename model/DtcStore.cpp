// SPDX-License-Identifier: MIT
#include "model/DtcStore.h"

#include <string>

#include "base/Failure.h"

namespace korval::model {
namespace {

constexpr std::int32_t kSubscriptError = 9;

[[noreturn]] void RaiseSubscript(std::int32_t index, std::int32_t count) {
  throw base::Failure(kSubscriptError, "Subscript out of range: DTC record " + std::to_string(index) +
                                           " of " + std::to_string(count));
}

}  // namespace

void DtcStore::ClearFailures() {
  count_ = -1;
  cursor_ = -1;
}

void DtcStore::InitFailures(std::int32_t nb) {
  if (nb < 0) RaiseSubscript(nb, nb);
  count_ = nb;
  codes_.assign(static_cast<std::size_t>(nb) + 1, 0);
  statuses_.assign(static_cast<std::size_t>(nb) + 1, 0);
  if (nb > 0) cursor_ = 1;
}

void DtcStore::SetFailure(std::int32_t index, std::int32_t code, std::int32_t status) {
  const std::size_t at = Checked(index);
  codes_[at] = code;
  statuses_[at] = status;
}

std::int32_t DtcStore::NextDtc() {
  RequireCursor();
  cursor_ = cursor_ < count_ ? cursor_ + 1 : -1;
  return cursor_;
}

void DtcStore::RequireCursor() const {
  if (count_ == -1) throw base::Failure("Read DTC before to get value");
  if (cursor_ == -1) throw base::Failure("All DTC already read");
}

std::size_t DtcStore::CursorIndex() const {
  RequireCursor();
  return Checked(cursor_);
}

std::size_t DtcStore::Checked(std::int32_t index) const {
  if (index < 0 || index > count_) RaiseSubscript(index, count_);
  return static_cast<std::size_t>(index);
}

}  // namespace korval::model
