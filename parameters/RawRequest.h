// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "base/Task.h"
#include "diag/DiagnosisObject.h"
#include "host/trace/TraceConsole.h"
#include "model/KorvAsapFile.h"

namespace korval::parameters {

/// The special name `kwprequest`: sends a diagnostic request given in hexadecimal, and keeps the ECU's answer
/// with the file. A negative answer is an answer.
class RawRequest {
 public:
  /// The arguments outlive this object.
  RawRequest(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis)
      : console_(console), diagnosis_(diagnosis) {}

  /// Raises Failure 1 for a text that is no request, and the library's own. The file then has no answer.
  base::Task<void> Send(std::shared_ptr<model::KorvAsapFile> file, std::string hex);
  /// The last answer in hexadecimal. Raises Failure 1 when there is none.
  static std::string LastAnswer(const model::KorvAsapFile& file);

 private:
  host::TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
};

}  // namespace korval::parameters
