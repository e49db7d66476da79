// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <exception>

namespace korval::fuzz {

/// Ends the run when something does not hold, so that the fuzzer keeps the input that broke it.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "fuzz: does not hold: %s\n", what);
  std::terminate();
}

}  // namespace korval::fuzz
