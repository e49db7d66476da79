// SPDX-License-Identifier: MIT
#include "platform/LineErrors.h"

#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace korval::platform {

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

}  // namespace korval::platform
