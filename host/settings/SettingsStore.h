// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace korval::host {

/// The seam to where settings are kept: the registry on Windows, INI files elsewhere. A path is written
/// with '/' ("KorvalAsapServer/Properties/tcpipPort"); values are text, UTF-8.
class SettingsStore {
 public:
  virtual ~SettingsStore() = default;
  /// False when what was stored for this person cannot be read, so that nobody knows what it was.
  virtual bool IsReadable() const { return true; }
  /// The per-user value; none when it is absent.
  virtual std::optional<std::string> Read(const std::string& path) const = 0;
  /// Raises Failure when the value cannot be stored.
  virtual void Write(const std::string& path, const std::string& value) = 0;
  /// A value of the machine-wide installation record, which is never written.
  virtual std::optional<std::string> ReadMachineWide(const std::string& path) const = 0;
};

}  // namespace korval::host
