// SPDX-License-Identifier: MIT
#include "platform/LineErrors.h"

namespace korval::platform {

std::vector<protocol::CommEvent> LineErrors::Since(const Counters& counters, bool rts_cts_handshaking) {
  using protocol::CommEvent;
  std::vector<CommEvent> events;
  const auto add = [&](bool happened, CommEvent event) {
    if (happened) events.push_back(event);
  };
  add(counters.breaks != last_.breaks, CommEvent::kBreak);
  add(counters.framing != last_.framing, CommEvent::kFraming);
  add(counters.parity != last_.parity, CommEvent::kParity);
  add(counters.overrun != last_.overrun, CommEvent::kOverrun);
  add(counters.buffer_overrun != last_.buffer_overrun, CommEvent::kReceiveBufferOverflow);
  add(last_.carrier && !counters.carrier, CommEvent::kCarrierDetectTimeout);
  add(last_.cts && !counters.cts && !rts_cts_handshaking, CommEvent::kCtsTimeout);
  add(last_.dsr && !counters.dsr, CommEvent::kDsrTimeout);
  last_ = counters;
  return events;
}

}  // namespace korval::platform
