// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>

#include <QtGlobal>

#include "base/Failure.h"
#include "platform/logind/LogindPower.h"

// What the program calls in the library of the power service. `refusal` stays empty where the service obeys.
extern "C" Q_DECL_EXPORT void KorvalEndSystem(std::uint32_t flags, std::string& refusal) {
  try {
    korval::platform::LogindPower().ExitWindows(flags, 0);
  } catch (const korval::base::Failure& failure) {
    refusal = failure.Description();
  }
}
