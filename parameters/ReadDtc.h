// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/Task.h"
#include "diag/DiagnosisObject.h"
#include "host/trace/TraceConsole.h"
#include "model/KorvAsapFile.h"

namespace korval::parameters {

/// The special name `readdtc`: reads an ECU's trouble codes into the file's DTC store.
class ReadDtc {
 public:
  /// The arguments outlive this object.
  ReadDtc(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis)
      : console_(console), diagnosis_(diagnosis) {}

  /// Returns the number of DTCs. Raises the library's failures; records that came before stay.
  base::Task<std::int16_t> Read(std::shared_ptr<model::KorvAsapFile> file);

 private:
  base::Task<void> Initialise(std::shared_ptr<viator3::Ecu> ecu);
  void Trace(const std::string& text);

  host::TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
};

}  // namespace korval::parameters
