// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korval::model {

/// One value that the client chose for acquisition.
struct KorvAsapValue {
  std::string korvName;       ///< data item's name in the ECU file
  std::int32_t lunId = 0;     ///< id of the file through which it was chosen
  std::string valueName;      ///< name as the client gave it
  std::int32_t ScanTime = 0;  ///< for the host; the server neither sets nor reads it
  std::int32_t DataType = 0;  ///< for the host; the server neither sets nor reads it
};

}  // namespace korval::model
