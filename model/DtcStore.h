// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korval::model {

/// The diagnostic trouble codes that were read from an ECU, and the cursor with which a client walks
/// them. Records count from 1; index 0 exists and stays 0. A failed access raises Failure 1, an index
/// beyond the records Failure 9.
class DtcStore {
 public:
  /// Back to "not read".
  void ClearFailures();
  /// Makes room for `nb` (0 or more) records and puts the cursor on the first, if there is one.
  void InitFailures(std::int32_t nb);
  void SetFailure(std::int32_t index, std::int32_t code, std::int32_t status);
  /// Moves the cursor to the next record and returns its index, -1 behind the last.
  std::int32_t NextDtc();
  /// Code and status of the record under the cursor.
  std::int32_t dtccode() const { return codes_[CursorIndex()]; }
  std::int32_t dtcstatus() const { return statuses_[CursorIndex()]; }

 private:
  void RequireCursor() const;
  std::size_t CursorIndex() const;
  std::size_t Checked(std::int32_t index) const;

  std::int32_t count_ = -1;   // -1: not read
  std::int32_t cursor_ = -1;  // -1: no current record
  std::vector<std::int32_t> codes_;
  std::vector<std::int32_t> statuses_;
};

}  // namespace korval::model
