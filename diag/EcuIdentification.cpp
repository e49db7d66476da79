// SPDX-License-Identifier: MIT
#include "diag/EcuIdentification.h"

#include "base/Errand.h"
#include "base/Failure.h"
#include "diag/LinkErrors.h"

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

std::string ReadEcuIdentification(viator3::Session& session, viator3::Ecu& ecu) {
  if (ecu.Protocol() == kDiagOnCan && !session.MessagingLoaded()) {
    return "No CAN messaging loaded, unable to read identification";
  }
  try {
    if (!ecu.Initialised()) ecu.Initialise();
  } catch (const base::Failure& failure) {
    return InitialisationText(failure);
  }
  const base::ByteBuffer request{0x21, 0x80};
  base::ByteBuffer response;
  try {
    base::Errand::RequireWanted();
    ecu.Send(request, response);
  } catch (const base::Failure& failure) {
    return "Read ident error : " + failure.Description() + " s=" + request.ToHex() + " r=" + response.ToHex();
  }
  return response.ToHex();
}

}  // namespace korval::diag
