// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include <termios.h>

#include "base/ByteBuffer.h"

namespace korval::platform {

/// The far end of a serial line: a pseudo terminal whose near end is a device file.
class PseudoTerminal {
 public:
  PseudoTerminal();
  ~PseudoTerminal() { Unplug(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  const std::string& Device() const { return device_; }
  void Send(base::ByteView bytes);
  /// Everything that has come so far.
  const base::ByteBuffer& Received();
  /// How the near end is set up.
  termios Settings() const;
  void Unplug();

 private:
  int descriptor_;
  std::string device_;
  base::ByteBuffer received_;
};

}  // namespace korval::platform
