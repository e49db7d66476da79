// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "apps/ecu-sim/PacedOutput.h"
#include "apps/ecu-sim/PtyLine.h"
#include "base/EventLoop.h"
#include "ecu/buslog/BusLog.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/simulation/KLineEcu.h"

namespace korval::apps {

/// The simulated ECU on a K-line, which is a pseudo terminal; what it says takes the time of its speed.
class KLineStation {
 public:
  /// `echo` gives every byte back, as the one wire of a K-line does. `log` may be null.
  KLineStation(const std::shared_ptr<base::EventLoop>& loop,
               const std::shared_ptr<const ecu::EcuDescription>& description, const std::string& path,
               bool echo, std::shared_ptr<ecu::BusLog> log);

 private:
  void BytesArrived(base::ByteView bytes);
  void Send(base::ByteView bytes);

  std::string path_;
  std::shared_ptr<ecu::BusLog> log_;
  PtyLine line_;
  PacedOutput output_;
  ecu::KLineEcu ecu_;
};

}  // namespace korval::apps
