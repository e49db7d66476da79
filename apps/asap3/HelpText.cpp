// SPDX-License-Identifier: MIT
#include "apps/asap3/Options.h"

namespace korval::apps {

const char* const kHelpText =
    R"help(asap3 talks to an ASAP3 server: it opens a session, carries out one COMMAND, and ends the session.

  asap3 [OPTIONS] COMMAND ...

Commands (those marked * work on an ECU, which --file and --section choose)
  identify            who the server is
  get NAME...       * values of parameters, each read from the ECU
  set NAME VALUE    * writes a number
  xget NAME...      * values of any type; also texts and the special names
  xset NAME VALUE   * writes a value of the --type given
  watch NAME...     * values again and again, until Ctrl-C or --count
  dtc               * the ECU's diagnostic trouble codes
  raw HEX           * a diagnostic request as bytes; prints the answer
  can FRAMES        * sends CAN frames: eight digits of identifier and the data in hex, ';' between frames
  send HEX            one frame as given, without a session; prints the answer

Which server
  --host HOST               name or address (default 127.0.0.1)
  --port PORT               TCP port (default 1001)
  --serial DEVICE           a serial line instead of TCP, such as /dev/ttyUSB0
  --serial-settings TEXT    speed, parity, data bits, stop bits (default 9600,n,8,1)
  --timeout MS              longest wait for each answer (default 5000)

Which ECU
  --file DESCRIPTION        description file, as it is called on the server
  --section NAME            section of it
  --address N               address, 0 to 65535 (default 0)

How
  --type TYPE               xset: real (default), real8 or string
  --count N                 watch: ends after N readings
  --interval MS             watch: time from reading to reading (default 1000)
  --csv FILE                watch: writes the readings to FILE too
  --json                    one JSON object a line instead of text, also for exit statuses 1 and 3
  --                        what follows is no option
  --help, -h                this text
  --version                 the version

Examples
  asap3 identify
  asap3 get --file engine.xml --section ENGINE Speed Coolant
  asap3 set --file engine.xml --section ENGINE IdleSpeed 850
  asap3 watch --file engine.xml --section ENGINE --count 10 --interval 200 --csv run.csv Speed Torque
  asap3 xget --file engine.xml --section ENGINE Vin "qortext(READ_STATES;Gear)"
  asap3 xset --file engine.xml --section ENGINE --type string kwprequest 2180
  asap3 dtc --file engine.xml --section ENGINE
  asap3 raw --file engine.xml --section ENGINE 2180
  asap3 can --file engine.xml --section ENGINE "0000012301020304;000007DF"
  asap3 --serial /dev/ttyUSB0 --serial-settings 19200,e,8,1 identify
  asap3 send 000600020008

Exit status
  0 success   1 the server answered with an error   2 wrong usage   3 no connection or no valid answer
)help";

}  // namespace korval::apps
