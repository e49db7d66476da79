// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "base/ByteBuffer.h"
#include "ecu/description/EcuDescription.h"

namespace korval::ecu {

/// The trouble codes of the simulated ECU. An answer to service 17 or 18 is
///   service + 40 hex · number of all codes (1 byte) · records of 3 bytes: code (big-endian), status
/// and holds at most `per_answer` records; a continuation brings the next ones.
class DtcMemory {
 public:
  /// One byte counts the codes, so those beyond 255 are left out.
  DtcMemory(std::vector<SimulationDescription::Dtc> dtcs, std::size_t per_answer);

  /// Appends the count and the first records, or the records behind the last answer's.
  void AppendRecords(bool continuation, base::ByteBuffer& answer);
  void Clear();

 private:
  std::vector<SimulationDescription::Dtc> dtcs_;
  std::size_t per_answer_;
  std::size_t next_ = 0;
};

}  // namespace korval::ecu
