// SPDX-License-Identifier: MIT
#include "diag/EcuIdentification.h"

#include "base/Failure.h"

namespace korval::diag {
namespace {

std::string InitialisationText(const base::Failure& failure) {
  switch (failure.Number()) {
    case kCanNetworkError:
      return "ECU power off or missing, or CAN network error";
    case kNoAnswer:
      return "ECU power off or missing";
    default:
      return "Init Error : " + failure.Description();
  }
}

}  // namespace

base::Task<std::string> ReadEcuIdentification(std::shared_ptr<viator3::Session> session,
                                              std::shared_ptr<viator3::Ecu> ecu) {
  if (ecu->Features().needs_messaging && !session->MessagingLoaded()) {
    co_return "No CAN messaging loaded, unable to read identification";
  }
  try {
    if (!ecu->Initialised()) co_await ecu->Initialise();
  } catch (const base::Failure& failure) {
    co_return InitialisationText(failure);
  }
  const viator3::Exchange exchange = co_await ecu->ReadIdentification();
  if (!exchange.failure) co_return exchange.answer.ToHex();
  co_return "Read ident error : " + exchange.failure->Description() + " s=" + exchange.request.ToHex() +
      " r=" + exchange.answer.ToHex();
}

}  // namespace korval::diag
