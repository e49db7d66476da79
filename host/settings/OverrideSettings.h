// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/settings/SettingsStore.h"

namespace korval::host {

/// Settings of this run on top of the stored ones: read first, never saved. What a person changes at the
/// console is stored and holds at once; an overridden value that is saved unchanged stays out of the store.
class OverrideSettings : public SettingsStore {
 public:
  using Overrides = std::map<std::string, std::string>;

  OverrideSettings(std::shared_ptr<SettingsStore> store, Overrides overrides)
      : store_(std::move(store)), overrides_(std::move(overrides)) {}

  bool IsReadable() const override { return store_->IsReadable(); }
  std::optional<std::string> Read(const std::string& path) const override {
    const auto found = overrides_.find(path);
    return found == overrides_.end() ? store_->Read(path) : found->second;
  }
  void Write(const std::string& path, const std::string& value) override {
    const auto found = overrides_.find(path);
    if (found != overrides_.end() && found->second == value) return;
    store_->Write(path, value);
    if (found != overrides_.end()) overrides_.erase(found);
  }
  std::optional<std::string> ReadMachineWide(const std::string& path) const override {
    return store_->ReadMachineWide(path);
  }

 private:
  std::shared_ptr<SettingsStore> store_;
  Overrides overrides_;
};

}  // namespace korval::host
