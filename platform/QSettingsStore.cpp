// SPDX-License-Identifier: MIT
#include "platform/QSettingsStore.h"

#include <utility>

#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

#include "base/Failure.h"

namespace korval::platform {
namespace {

#ifdef Q_OS_WIN
std::unique_ptr<QSettings> OpenUser(const QString& file) {
  if (!file.isEmpty()) return std::make_unique<QSettings>(file, QSettings::IniFormat);
  return std::make_unique<QSettings>("HKEY_CURRENT_USER\\Software\\VB and VBA Program Settings",
                                     QSettings::NativeFormat);
}

std::unique_ptr<QSettings> OpenMachine(const QString& file) {
  if (!file.isEmpty()) return std::make_unique<QSettings>(file, QSettings::IniFormat);
  return std::make_unique<QSettings>("HKEY_LOCAL_MACHINE\\Software\\Norvane", QSettings::NativeFormat);
}
#else
std::unique_ptr<QSettings> OpenUser(const QString& file) {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return std::make_unique<QSettings>(file.isEmpty() ? folder + "/Korval/Korval.ini" : file,
                                     QSettings::IniFormat);
}

std::unique_ptr<QSettings> OpenMachine(const QString& file) {
  return std::make_unique<QSettings>(file.isEmpty() ? "/etc/korval/korval.ini" : file, QSettings::IniFormat);
}
#endif

// A value with commas that was written by hand without quotes reads as a list. Of a damaged file nothing
// counts, for nobody knows what else it has lost.
std::optional<std::string> Value(const QSettings& settings, const std::string& path) {
  if (settings.status() == QSettings::FormatError) return std::nullopt;
  const QVariant value = settings.value(QString::fromStdString(path));
  if (!value.isValid()) return std::nullopt;
  return value.toStringList().join(',').toStdString();
}

// Qt looks at each section when it is first asked for, and finds damage only then.
QSettings::Status ReadWhole(const QSettings& settings) {
  static_cast<void>(settings.allKeys());
  return settings.status();
}

std::string Problem(const QSettings& settings) {
  const std::string file = "Settings file " + settings.fileName().toStdString();
  if (settings.status() == QSettings::FormatError) {
    return file + " is damaged: the server runs on defaults and saves nothing until it is mended or removed";
  }
  return file + " cannot be read or written: check that its folder exists, and the access rights of both";
}

}  // namespace

QSettingsStore::QSettingsStore(const QString& user_file, const QString& machine_file, Report report)
    : user_file_(user_file),
      report_(std::move(report)),
      user_(OpenUser(user_file)),
      machine_(OpenMachine(machine_file)) {
  if (ReadWhole(*machine_) != QSettings::NoError) report_(Problem(*machine_));
  if (ReadWhole(*user_) != QSettings::NoError) ReportUser(Problem(*user_));
}

QSettingsStore::~QSettingsStore() = default;

std::optional<std::string> QSettingsStore::Read(const std::string& path) const { return Value(*user_, path); }

std::optional<std::string> QSettingsStore::ReadMachineWide(const std::string& path) const {
  return Value(*machine_, path);
}

void QSettingsStore::Write(const std::string& path, const std::string& value) {
  if (user_->status() == QSettings::FormatError) throw base::Failure(Problem(*user_));
  // The status of one object never returns to good; both objects share the values.
  const auto writer = OpenUser(user_file_);
  if (ReadWhole(*writer) != QSettings::FormatError) {
    writer->setValue(QString::fromStdString(path), QString::fromStdString(value));
    writer->sync();
  }
  if (writer->status() == QSettings::NoError) return;
  const std::string problem = Problem(*writer);
  ReportUser(problem);
  throw base::Failure(problem);
}

void QSettingsStore::ReportUser(const std::string& problem) {
  if (!std::exchange(user_reported_, true)) report_(problem);
}

}  // namespace korval::platform
