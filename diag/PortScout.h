// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace korval::diag {

/// The seam to the enumerator of plugged-in diagnostic interfaces.
class PortScout {
 public:
  virtual ~PortScout() = default;
  /// An XML text; the text of every element "sn" in it is the serial number of one interface.
  virtual std::string DeviceList() = 0;
  /// `on_changed` is called from the event loop when an interface was plugged in or pulled.
  virtual void SetOnDevicesHaveChanged(std::function<void()> on_changed) = 0;
  /// Ends the notifications.
  virtual void Shutdown() = 0;
};

}  // namespace korval::diag
