// SPDX-License-Identifier: MIT
#include "SystemPower.h"

#include <string>

#include "PartOfProgram.h"
#include "base/Failure.h"

namespace korval::apps {

void SystemPower::ExitWindows(std::uint32_t flags, std::uint32_t) {
  using Entry = void(std::uint32_t flags, std::string & refusal);
  const PartOfProgram part("korval-asap-server-power");
  std::string refusal;
  part.Find<Entry>("KorvalEndSystem")(flags, refusal);
  if (!refusal.empty()) throw base::Failure(refusal);
}

}  // namespace korval::apps
