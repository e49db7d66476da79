// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "host/settings/SettingsStore.h"

namespace korval::host {

/// The per-user values of the host application `QOR`, which the server shares with it.
class HostSettings {
 public:
  /// The store outlives the settings.
  explicit HostSettings(SettingsStore& store) : store_(store) {}

  /// The value, or `default_value` when it is absent, empty or cannot be read.
  std::string RegGetValue(const std::string& section, const std::string& key,
                          const std::string& default_value) const;
  /// A value that cannot be stored is lost without a word: the caller has nobody to tell.
  void RegSetValue(const std::string& section, const std::string& key, const std::string& value);

 private:
  SettingsStore& store_;
};

}  // namespace korval::host
