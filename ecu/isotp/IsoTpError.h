// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace korval::ecu {

/// What ended the transfer of a message, the negative results of ISO 15765-2.
enum class IsoTpResult {
  kTimeoutA,       ///< a frame did not get onto the bus within N_As or N_Ar
  kTimeoutBs,      ///< no flow control within N_Bs
  kTimeoutCr,      ///< no consecutive frame within N_Cr
  kWrongSequence,  ///< a consecutive frame was lost or doubled
  kInvalidStatus,  ///< a flow control with a reserved flow status
  kTooManyWaits,   ///< more wait frames than N_WFTmax
  kOverflow,       ///< the receiver has no room for the message
  kTooLong         ///< the sender's message is longer than we take
};

struct IsoTpError {
  IsoTpResult result = IsoTpResult::kTimeoutA;
  std::string text;  ///< what happened and how far the transfer got
};

/// The failure's number of ErrorNumbers.h.
std::int32_t NumberOf(IsoTpResult result);

/// "1000 ms", "0.5 ms".
std::string TimeText(std::chrono::microseconds time);

}  // namespace korval::ecu
