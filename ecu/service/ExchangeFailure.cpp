// SPDX-License-Identifier: MIT
#include "ecu/service/ExchangeFailure.h"

#include "base/ErrorNumbers.h"
#include "ecu/link/AnswerBytes.h"

namespace korval::ecu {
namespace {

base::Failure FailureOfForeign(const Exchange& exchange, const ErrorTable& errors) {
  const Dialect& dialect = exchange.SpokenIn();
  const std::string service = dialect.NameOf(exchange.Service());
  const base::ByteBuffer& answer = exchange.Answer();
  const auto ended = static_cast<std::uint8_t>(answer.At(0) - kPositiveOffset);
  if (dialect.EndsCommunication(ended)) {
    return errors.MakeFailure(kCommunicationEnded, service + " was answered with " + dialect.NameOf(ended));
  }
  return errors.MakeFailure(kForeignAnswer, service + " was answered with " + answer.ToHex());
}

}  // namespace

std::optional<base::Failure> FailureOf(const Exchange& exchange, const std::string& ecu,
                                       const ErrorTable& errors) {
  const Dialect& dialect = exchange.SpokenIn();
  switch (exchange.CurrentState()) {
    case Exchange::State::kPositive:
      return std::nullopt;
    case Exchange::State::kNegative:
      return errors.MakeFailure(kNegativeAnswer,
                                dialect.RefusalText(exchange.Service(), exchange.Answer().At(2)));
    case Exchange::State::kForeign:
      return FailureOfForeign(exchange, errors);
    case Exchange::State::kSilent:
    case Exchange::State::kWaiting:
      break;
  }
  return errors.MakeFailure(kNoAnswer, ecu + " does not answer " + dialect.NameOf(exchange.Service()) +
                                           " (check ignition, power and cable)");
}

}  // namespace korval::ecu
