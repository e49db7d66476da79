// SPDX-License-Identifier: MIT
#include "ecu/session/SessionFactory.h"

#include "ecu/session/Session.h"

namespace korval::ecu {

std::shared_ptr<viator3::Session> CreateSession(const SessionEnvironment& environment) {
  return std::make_shared<Session>(environment);
}

}  // namespace korval::ecu
