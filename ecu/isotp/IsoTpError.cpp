// SPDX-License-Identifier: MIT
#include "ecu/isotp/IsoTpError.h"

#include "base/ErrorNumbers.h"
#include "base/NumberText.h"

namespace korval::ecu {

std::int32_t NumberOf(IsoTpResult result) {
  switch (result) {
    case IsoTpResult::kTimeoutA:
      return kCanNetworkError;
    case IsoTpResult::kTimeoutBs:
    case IsoTpResult::kTimeoutCr:
    case IsoTpResult::kTooManyWaits:
      return kNoAnswer;
    case IsoTpResult::kOverflow:
      return kValueRefused;
    case IsoTpResult::kWrongSequence:
    case IsoTpResult::kInvalidStatus:
    case IsoTpResult::kTooLong:
      break;
  }
  return kForeignAnswer;
}

std::string TimeText(std::chrono::microseconds time) {
  return base::DoubleText(static_cast<double>(time.count()) / 1000) + " ms";
}

}  // namespace korval::ecu
