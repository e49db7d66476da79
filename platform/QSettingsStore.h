// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>

#include <QString>

#include "host/settings/SettingsStore.h"

class QSettings;

namespace korval::platform {

/// Settings in INI files, or in the registry on Windows when no file is named. A file that is damaged or
/// cannot be written is reported once; the server then runs on defaults. A write is atomic. A value that
/// could not be written still holds for this run, and is written together with the next one.
class QSettingsStore : public host::SettingsStore {
 public:
  using Report = std::function<void(const std::string&)>;

  /// For how long a write waits for another program's, which takes milliseconds.
  static constexpr std::chrono::milliseconds kLockWait{2000};

  /// Empty file names stand for the usual places: $XDG_CONFIG_HOME/Korval/Korval.ini (else below ~/.config)
  /// and /etc/korval/korval.ini.
  QSettingsStore(const QString& user_file, const QString& machine_file, Report report,
                 std::chrono::milliseconds lock_wait = kLockWait);
  ~QSettingsStore() override;

  bool IsReadable() const override;
  std::optional<std::string> Read(const std::string& path) const override;
  /// Waits for the file's lock: as long as kLockWait at first, not at all once that was in vain.
  void Write(const std::string& path, const std::string& value) override;
  std::optional<std::string> ReadMachineWide(const std::string& path) const override;

 private:
  std::unique_ptr<QSettings> ReplaceFile();
  void ReportUser(const std::string& problem);

  Report report_;
  std::unique_ptr<QSettings> user_;  // as it was last read or written
  std::unique_ptr<QSettings> machine_;
  QString user_file_;
  std::map<std::string, std::string> unsaved_;
  std::chrono::milliseconds lock_wait_;
  bool user_reported_ = false;
};

}  // namespace korval::platform
