// SPDX-License-Identifier: MIT
// The way into this library: a session as diag/viator3.h describes it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/ByteBuffer.h"
#include "base/EventLoop.h"
#include "diag/viator3.h"
#include "ecu/can/CanBus.h"
#include "ecu/kline/KLinePorts.h"
#include "ecu/kline/KLineWire.h"

namespace korval::ecu {

/// What a session needs from the program around it.
struct SessionEnvironment {
  /// Time and waiting; shared with everything of the session that outlives it.
  std::shared_ptr<base::EventLoop> loop;
  /// The configured port; the link opens when it is written back.
  std::string port;
  /// Where ECU files are looked for when none that was offered has the function; "" for nowhere.
  std::string ecu_folder;
  /// Sees each CAN frame that goes to the simulated bus: identifier, and 0 to 8 bytes. May be empty.
  std::function<void(std::int32_t identifier, base::ByteView data)> on_can_frame;
  /// Opens a CAN bus through a plugin ("socketcan", "virtualcan", ...) on an interface ("can0") at so many
  /// bit/s. Raises Failure that says why not and what to do. May be empty: then no CAN port can be opened.
  std::function<std::unique_ptr<CanBus>(const std::string& plugin, const std::string& interface,
                                        std::int32_t bitrate)>
      open_can_bus = {};
  /// The adapter on a serial device ("/dev/ttyUSB0", "COM3"), not open yet. May be empty: then no K-line port
  /// can be opened.
  std::function<std::unique_ptr<KLineWire>(const std::string& device)> open_kline_wire = {};
  /// The K-lines in use. A program gives all its sessions the same, so that one can begin on a port while
  /// the one before still takes its leave.
  std::shared_ptr<KLinePorts> kline_ports = std::make_shared<KLinePorts>();
  /// The port of the USB interface chosen by its serial number, for the port NONE; "" while it is not plugged
  /// in. May be empty: then the port NONE cannot be opened.
  std::function<std::string()> find_usb_port = {};
  /// Takes sentences worth showing that are no failures, such as what was left out of a CAN messaging file.
  std::function<void(const std::string& text)> on_note = {};
};

/// A session with no link open yet. Destroying it closes it.
std::shared_ptr<viator3::Session> CreateSession(const SessionEnvironment& environment);

}  // namespace korval::ecu
