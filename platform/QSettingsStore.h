// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include <QString>

#include "host/settings/SettingsStore.h"

class QSettings;

namespace korval::platform {

/// Settings in INI files, or in the registry on Windows when no file is named. A file that is damaged or
/// cannot be written is reported once; the server then runs on defaults. A write is atomic. A value that
/// could not be written still holds for this run.
class QSettingsStore : public host::SettingsStore {
 public:
  using Report = std::function<void(const std::string&)>;

  /// Empty file names stand for the usual places: $XDG_CONFIG_HOME/Korval/Korval.ini (else below ~/.config)
  /// and /etc/korval/korval.ini.
  QSettingsStore(const QString& user_file, const QString& machine_file, Report report);
  ~QSettingsStore() override;

  std::optional<std::string> Read(const std::string& path) const override;
  void Write(const std::string& path, const std::string& value) override;
  std::optional<std::string> ReadMachineWide(const std::string& path) const override;

 private:
  void ReportUser(const std::string& problem);

  QString user_file_;
  Report report_;
  std::unique_ptr<QSettings> user_;
  std::unique_ptr<QSettings> machine_;
  bool user_reported_ = false;
};

}  // namespace korval::platform
