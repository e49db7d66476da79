// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace korval::host {

/// What the settings panel edits.
struct PanelValues {
  /// Speed, parity letter, data bits and stop bits, as in "9600,n,8,1".
  std::string setting;
  /// The number of the serial port, from 1.
  std::int32_t comm_port = 1;
  /// 0 none, 1 Xon/Xoff, 2 RTS, 3 Xon/RTS.
  std::int32_t handshaking = 0;
  bool com_auto_open = false;
  /// 0 stands for any free one and cannot be typed in, only kept.
  std::int32_t tcp_ip_port = 0;
  std::string asap_folder;
  std::string korv_folder;
  /// Where the TCP port listens and whom it lets in, as ServerSettings has them.
  std::string listen;
  std::string allow;

  friend bool operator==(const PanelValues&, const PanelValues&) = default;
};

}  // namespace korval::host
