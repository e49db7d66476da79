// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "host/settings/SettingsStore.h"

namespace korval::fuzz {

class MemorySettings : public host::SettingsStore {
 public:
  explicit MemorySettings(std::map<std::string, std::string> values) : values_(std::move(values)) {}

  std::optional<std::string> Read(const std::string& path) const override {
    const auto found = values_.find(path);
    if (found == values_.end()) return std::nullopt;
    return found->second;
  }
  void Write(const std::string& path, const std::string& value) override { values_[path] = value; }
  std::optional<std::string> ReadMachineWide(const std::string&) const override { return std::nullopt; }

 private:
  std::map<std::string, std::string> values_;
};

}  // namespace korval::fuzz
