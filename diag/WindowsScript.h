// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "base/Task.h"
#include "base/Variant.h"
#include "diag/DiagnosisObject.h"
#include "diag/ScriptFile.h"

namespace korval::diag {

/// Reads and writes an ECU's values by name, through the instance object that it makes for each file on
/// first use. Raises Failure 10010 (the object cannot be created), 10011 (its protocol cannot be set) or
/// 10012 (the access failed). Keeps no state; a file without an object gets another try at each access.
class WindowsScript {
 public:
  /// The diagnosis object outlives this one.
  explicit WindowsScript(const DiagnosisObject& diagnosis) : diagnosis_(diagnosis) {}

  base::Task<void> Set(std::shared_ptr<ScriptFile> file, std::string name, base::Variant value) const;
  base::Task<base::Variant> Get(std::shared_ptr<ScriptFile> file, std::string name) const;

 private:
  std::shared_ptr<viator3::InstanceObject> InstanceOf(const std::shared_ptr<ScriptFile>& file) const;

  const DiagnosisObject& diagnosis_;
};

}  // namespace korval::diag
