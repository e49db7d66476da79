// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "ecu/service/TroubleCodeReading.h"

namespace korval::ecu {

/// readStatusOfDiagnosticTroubleCodes (ISO 14230-3, service 17) for all groups. An answer is
///   0  57              1  number of trouble codes in all
///   2 + 3k  code, high byte first       4 + 3k  status
/// and where it ends before all records have come, the request is continued (17 FF FF).
class StatusOfTroubleCodes : public TroubleCodeReading {
 public:
  base::ByteView NextRequest() const override;
  void Take(base::ByteView answer) override;
  std::size_t Announced() const override { return announced_; }
  const std::vector<TroubleCode>& Codes() const override { return codes_; }

 private:
  enum class Step { kFirst, kRest, kDone };

  void TakeCount(base::ByteView answer);
  void TakeRecord(base::ByteView record);

  Step step_ = Step::kFirst;
  std::size_t announced_ = 0;
  std::vector<TroubleCode> codes_;
};

}  // namespace korval::ecu
