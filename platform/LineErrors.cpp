// SPDX-License-Identifier: MIT
#include "platform/LineErrors.h"

#include <QtGlobal>

#ifdef Q_OS_LINUX
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>
#endif

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

#ifdef Q_OS_LINUX
bool LineErrors::Query(int descriptor, Counters& counters) {
  serial_icounter_struct icount = {};
  const bool counts = ::ioctl(descriptor, TIOCGICOUNT, &icount) == 0;
  counters.breaks = icount.brk;
  counters.framing = icount.frame;
  counters.overrun = icount.overrun;
  counters.parity = icount.parity;
  counters.buffer_overrun = icount.buf_overrun;
  int lines = 0;
  const bool has_lines = ::ioctl(descriptor, TIOCMGET, &lines) == 0;
  counters.carrier = (lines & TIOCM_CAR) != 0;
  counters.cts = (lines & TIOCM_CTS) != 0;
  counters.dsr = (lines & TIOCM_DSR) != 0;
  return counts || has_lines;
}
#else
bool LineErrors::Query(int, Counters&) { return false; }
#endif

}  // namespace korval::platform
