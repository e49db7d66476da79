// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "base/Task.h"
#include "base/Variant.h"
#include "diag/WindowsScript.h"
#include "host/trace/TraceConsole.h"
#include "model/KorvAsapFiles.h"
#include "parameters/RawRequest.h"
#include "parameters/ReadDtc.h"
#include "parameters/ScriptVariables.h"
#include "protocol/Dispatcher.h"
#include "protocol/PowerRequest.h"

namespace korval::parameters {

/// The commands "extended get parameter" and "extended set parameter": values of three data types (0 real,
/// 1 real8, 2 string), and the special names that reach the link, the DTC store, the script variables and
/// the host's power control.
class ExtendedParameter {
 public:
  /// The arguments outlive the commands; `power_request` is what the receive paths act on.
  ExtendedParameter(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis,
                    const model::KorvAsapFiles& files, const diag::WindowsScript& script,
                    protocol::PowerRequest& power_request);

  void AttachTo(protocol::Dispatcher& dispatcher);
  /// Reads lun (word) and name (string); answers a data type word and the value in that type.
  base::Task<std::int32_t> Get(base::ByteView parameters, base::ByteBuffer& reply);
  /// Reads lun (word), name (string), data type (word) and the value in that type; answers nothing.
  base::Task<std::int32_t> Set(base::ByteView parameters, base::ByteBuffer& reply);

 private:
  using File = std::shared_ptr<model::KorvAsapFile>;
  struct SetCall;

  base::Task<void> SetValue(base::ByteView parameters);
  base::Task<void> SetReal(SetCall call, float value);
  base::Task<void> SetReal8(SetCall call, double value);
  base::Task<void> SetString(SetCall call, std::string value);
  base::Task<void> SetSpecial(SetCall call, std::string value);
  base::Task<void> SendCanFrames(SetCall call, std::string value);
  base::Task<void> GetValue(base::ByteView parameters, base::ByteBuffer& reply);
  base::Task<base::Variant> ValueOf(File file, std::string name);
  base::Task<void> WriteByName(File file, std::string name, base::Variant value);
  void TraceSet(const SetCall& call, const std::string& value);
  void Trace(const std::string& text);

  host::TraceConsole& console_;
  const diag::DiagnosisObject& diagnosis_;
  const model::KorvAsapFiles& files_;
  const diag::WindowsScript& script_;
  protocol::PowerRequest& power_request_;
  ScriptVariables variables_;
  RawRequest raw_request_;
  ReadDtc read_dtc_;
};

}  // namespace korval::parameters
