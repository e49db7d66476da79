// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "host/settings/SettingsStore.h"

namespace korval::tests {

/// Settings in memory.
class MemorySettings : public host::SettingsStore {
 public:
  using Values = std::map<std::string, std::string>;

  explicit MemorySettings(Values user_values = {}, Values machine_values = {})
      : user(std::move(user_values)), machine(std::move(machine_values)) {}

  bool IsReadable() const override { return readable; }
  std::optional<std::string> Read(const std::string& path) const override { return Find(user, path); }
  void Write(const std::string& path, const std::string& value) override {
    if (read_only || refused.contains(path)) throw base::Failure("the settings cannot be written");
    user[path] = value;
    written.emplace_back(path, value);
  }
  std::optional<std::string> ReadMachineWide(const std::string& path) const override {
    return Find(machine, path);
  }

  Values user;
  Values machine;
  bool readable = true;
  bool read_only = false;
  /// Paths that cannot be written.
  std::set<std::string> refused;
  /// Every value that was written, in order.
  std::vector<std::pair<std::string, std::string>> written;

 private:
  static std::optional<std::string> Find(const Values& values, const std::string& path) {
    const auto found = values.find(path);
    if (found == values.end()) return std::nullopt;
    return found->second;
  }
};

}  // namespace korval::tests
