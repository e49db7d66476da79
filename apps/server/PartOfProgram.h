// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include <QFunctionPointer>

#include "platform/process/ProgramFolder.h"

namespace korval::apps {

/// A part of the program that is a library of its own, loaded when it is wanted: what most servers never need
/// they never map. The libraries lie beside the program where it was built, and in a folder of their own
/// where it was installed. They stay loaded.
class PartOfProgram {
 public:
  /// Loads the library of that name (without what systems put around it). Raises Failure when it is missing,
  /// cannot be loaded, or belongs to another version of the program. `program_folder` is where the program
  /// lies.
  explicit PartOfProgram(const std::string& name,
                         const std::string& program_folder = platform::ProgramFolder());

  /// A function of the library. Raises Failure when there is none of that name.
  template <typename Function>
  Function* Find(const char* function) const {
    return reinterpret_cast<Function*>(Resolve(function));
  }

 private:
  QFunctionPointer Resolve(const char* function) const;

  std::string file_;
};

}  // namespace korval::apps
