// SPDX-License-Identifier: MIT
#include "ecu/kwp2000/ExchangeFailure.h"

#include "ecu/description/ErrorNumbers.h"
#include "ecu/kwp2000/Names.h"

namespace korval::ecu {
namespace {

constexpr std::uint8_t kStopCommunication = 0x82;

base::Failure FailureOfForeign(const Exchange& exchange, const ErrorTable& errors) {
  if (exchange.Answer().At(0) == kStopCommunication + kPositiveOffset) {
    return errors.MakeFailure(kCommunicationEnded,
                              ServiceName(exchange.Service()) + " was answered with stopCommunication");
  }
  return errors.MakeFailure(
      kForeignAnswer, ServiceName(exchange.Service()) + " was answered with " + exchange.Answer().ToHex());
}

}  // namespace

std::optional<base::Failure> FailureOf(const Exchange& exchange, const std::string& ecu,
                                       const ErrorTable& errors) {
  switch (exchange.CurrentState()) {
    case Exchange::State::kPositive:
      return std::nullopt;
    case Exchange::State::kNegative:
      return errors.MakeFailure(kNegativeAnswer,
                                NegativeAnswerText(exchange.Service(), exchange.Answer().At(2)));
    case Exchange::State::kForeign:
      return FailureOfForeign(exchange, errors);
    case Exchange::State::kSilent:
    case Exchange::State::kWaiting:
      break;
  }
  return errors.MakeFailure(kNoAnswer, ecu + " does not answer " + ServiceName(exchange.Service()) +
                                           " (check ignition, power and cable)");
}

}  // namespace korval::ecu
