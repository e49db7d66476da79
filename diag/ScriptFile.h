// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "diag/viator3.h"

namespace korval::diag {

/// What by-name access needs of a selected description file, which owns its instance object.
class ScriptFile {
 public:
  virtual ~ScriptFile() = default;
  /// The section's name.
  virtual const std::string& BinaryFile() const = 0;
  virtual const std::string& KorvFunction() const = 0;
  /// The data item's name behind a short name, "" when there is none.
  virtual std::string KorvDataName(const std::string& asap_data_name) const = 0;
  /// Null until the first access.
  virtual std::shared_ptr<viator3::InstanceObject> WshObject() const = 0;
  virtual void SetWshObject(std::shared_ptr<viator3::InstanceObject> object) = 0;
};

}  // namespace korval::diag
