// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include <QByteArray>
#include <QString>

namespace korval::platform {

/// A CAN interface of the Linux kernel, as it stands in /sys/class/net. A socket stays with the interface
/// that it was opened on: one that was put back has the same name and another index.
class SocketCanInterface {
 public:
  enum class State {
    kOn,
    kBusOff,  ///< while a controller is, the kernel takes its carrier away
    kGone     ///< down, unplugged, or another one by now
  };

  /// Remembers which interface it is. `folder` holds its files.
  explicit SocketCanInterface(QString folder);
  static SocketCanInterface Named(const std::string& name);

  State CurrentState() const;

 private:
  QByteArray Read(const char* file) const;

  QString folder_;
  QByteArray index_;
};

}  // namespace korval::platform
