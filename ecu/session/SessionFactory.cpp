// SPDX-License-Identifier: MIT
#include "ecu/session/SessionFactory.h"

#include <utility>

#include "ecu/session/Session.h"

namespace korval::ecu {

std::shared_ptr<viator3::Session> CreateSession(SessionEnvironment environment) {
  return std::make_shared<Session>(std::move(environment));
}

}  // namespace korval::ecu
