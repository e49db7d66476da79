// SPDX-License-Identifier: MIT
#include "host/settings/HostSettings.h"

#include "base/Failure.h"

namespace korval::host {
namespace {

std::string PathOf(const std::string& section, const std::string& key) {
  return "QOR/" + section + "/" + key;
}

}  // namespace

std::string HostSettings::RegGetValue(const std::string& section, const std::string& key,
                                      const std::string& default_value) const {
  const std::string value = store_.Read(PathOf(section, key)).value_or("");
  return value.empty() ? default_value : value;
}

void HostSettings::RegSetValue(const std::string& section, const std::string& key, const std::string& value) {
  try {
    store_.Write(PathOf(section, key), value);
  } catch (const base::Failure&) {
    // The store itself has reported that it cannot be written.
  }
}

}  // namespace korval::host
