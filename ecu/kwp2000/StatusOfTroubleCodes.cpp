// SPDX-License-Identifier: MIT
#include "ecu/kwp2000/StatusOfTroubleCodes.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/ErrorNumbers.h"
#include "base/Failure.h"

namespace korval::ecu {
namespace {

constexpr std::array<std::uint8_t, 3> kAllGroups{0x17, 0xFF, 0x00};
constexpr std::array<std::uint8_t, 3> kContinuation{0x17, 0xFF, 0xFF};
constexpr std::size_t kFirstRecord = 2;
constexpr std::size_t kRecordLength = 3;

}  // namespace

base::ByteView StatusOfTroubleCodes::NextRequest() const {
  if (step_ == Step::kDone) return {};
  return step_ == Step::kFirst ? base::ByteView(kAllGroups) : base::ByteView(kContinuation);
}

void StatusOfTroubleCodes::Take(base::ByteView answer) {
  const bool is_first = step_ == Step::kFirst;
  step_ = Step::kDone;  // when it raises
  if (is_first) TakeCount(answer);
  base::ByteView records = answer.subspan(std::min(answer.size(), kFirstRecord));
  // The rest has a record at least: else it would be asked for without an end.
  bool needs_record = !is_first;
  while (codes_.size() < announced_ && (needs_record || !records.empty())) {
    TakeRecord(records);
    records = records.subspan(kRecordLength);
    needs_record = false;
  }
  if (codes_.size() < announced_) step_ = Step::kRest;
}

void StatusOfTroubleCodes::TakeCount(base::ByteView answer) {
  if (answer.size() < kFirstRecord) {
    throw base::Failure(kAnswerTooShort, "service 17 must answer at least 2 bytes");
  }
  announced_ = answer[1];
}

void StatusOfTroubleCodes::TakeRecord(base::ByteView record) {
  if (record.size() < kRecordLength) {
    throw base::Failure(kAnswerTooShort, "the answer of service 17 ends before DTC record " +
                                             std::to_string(codes_.size() + 1));
  }
  codes_.push_back({static_cast<std::uint32_t>(record[0] << 8U | record[1]), record[2]});
}

}  // namespace korval::ecu
