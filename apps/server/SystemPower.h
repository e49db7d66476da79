// SPDX-License-Identifier: MIT
#pragma once

#include "platform/UnprivilegedPower.h"

namespace korval::apps {

/// The system's power service. What reaches it is a part of the program of its own, which is loaded with the
/// first request.
class SystemPower : public platform::UnprivilegedPower {
 public:
  /// Raises Failure with the service's own words when it refuses, and when nothing reaches it.
  void ExitWindows(std::uint32_t flags, std::uint32_t reserved) override;
};

}  // namespace korval::apps
