// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "base/ByteBuffer.h"
#include "diag/DiagnosisObject.h"
#include "host/trace/TraceConsole.h"
#include "model/KorvAsapFile.h"

namespace korval::parameters {

/// The special name `readdtc`: reads an ECU's trouble codes into the file's DTC store with the service
/// readStatusOfDiagnosticTroubleCodes (ISO 14230-3, service 17). An answer is
///   0  57              1  number of DTCs in all
///   2 + 3k  code, high byte first       4 + 3k  status
/// and where it ends before all records have come, the request is continued.
class ReadDtc {
 public:
  /// The arguments outlive this object.
  ReadDtc(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis)
      : console_(console), diagnosis_(diagnosis) {}

  /// Returns the number of DTCs. Raises the library's failures, and 2002 for an answer that is too short;
  /// records that came before it stay.
  std::int16_t Read(model::KorvAsapFile& file);

 private:
  void Initialise(viator3::Ecu& ecu);
  base::ByteBuffer Send(viator3::Ecu& ecu, const base::ByteBuffer& request);
  void Keep(model::DtcStore& store, std::int32_t index, const base::ByteBuffer& answer, std::size_t offset);
  void Trace(const std::string& text);

  host::TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
};

}  // namespace korval::parameters
