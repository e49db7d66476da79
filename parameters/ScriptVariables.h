// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "base/Task.h"
#include "base/Variant.h"
#include "diag/DiagnosisObject.h"
#include "model/KorvAsapFile.h"

namespace korval::parameters {

/// Lets a test-bench script explore and drive the ECU function of a file through parameter names that
/// begin with "qor". Names are case-sensitive, indexes count from 1, two arguments are separated by ";",
/// and the last character of a name with arguments is dropped unseen. Raises Failure 11001 for a name it
/// takes but cannot serve, and the library's own numbers.
///
///   qornbrefdata               number of reference data      qorrefdata(index)          its name
///   qornbrequests              number of requests            qorrequest(index)          its name
///   qornbdata(request)         number of data                qordata(request;index)     its name
///   qornbparam(request)        number of parameters          qorparam(request;index)    its name
///   qortext(request;data)      text, also written            qorvalue(request;data)     value, also written
///   qorunit(request;data)      unit                          qorexecreq(request)        executes: error
///   number qorinit                    initialises: error number
class ScriptVariables {
 public:
  /// The diagnosis object outlives this one.
  explicit ScriptVariables(const diag::DiagnosisObject& diagnosis) : diagnosis_(diagnosis) {}

  static bool IsVariable(const std::string& name);
  /// The value of the variable; REQUIRES IsVariable(name).
  base::Task<base::Variant> Read(std::shared_ptr<model::KorvAsapFile> file, std::string name) const;
  /// False when the name is no script variable that can be written.
  bool Write(const model::KorvAsapFile& file, const std::string& name, const base::Variant& value) const;

 private:
  const diag::DiagnosisObject& diagnosis_;
};

}  // namespace korval::parameters
