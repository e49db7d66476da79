// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "base/ByteBuffer.h"
#include "base/Failure.h"

namespace korval::tests {

/// "number description" of the failure that a step raises, "none" when it raises none.
inline std::string FailureOf(const std::function<void()>& step) {
  try {
    step();
  } catch (const base::Failure& failure) {
    return std::to_string(failure.Number()) + " " + failure.Description();
  }
  return "none";
}

/// "code message" of the error record in a reply's data.
inline std::string ErrorRecord(const base::ByteBuffer& data) {
  const base::ByteView text = data.View(4, data.Word(2));
  return std::to_string(data.Word(0)) + " " + std::string(text.begin(), text.end());
}

}  // namespace korval::tests
