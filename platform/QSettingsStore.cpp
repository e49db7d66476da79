// SPDX-License-Identifier: MIT
#include "platform/QSettingsStore.h"

#include <utility>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>

#include "base/Failure.h"
#include "platform/SettingsFiles.h"

namespace korval::platform {
namespace {

std::unique_ptr<QSettings> OpenIni(const QString& file) {
  return std::make_unique<QSettings>(file, QSettings::IniFormat);
}

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

std::string Problem(const QString& path, QSettings::Status status) {
  const std::string file = "Settings file " + path.toStdString();
  if (status == QSettings::FormatError) {
    return file +
           " is damaged: the server runs on defaults, lets in clients on this computer only unless --allow "
           "names others, and saves nothing until it is mended or removed";
  }
  return file + " cannot be read or written: check that its folder exists, and the access rights of both";
}

std::string RecordProblem(const QSettings& record) {
  const std::string file = "Installation record " + record.fileName().toStdString();
  if (record.status() == QSettings::FormatError) {
    return file + " is damaged: nothing of it counts until it is mended and the server is started anew";
  }
  return file + " cannot be read, nothing of it counts: check its access rights and start the server anew";
}

// Raises Failure that names `file` when the values cannot be written.
void SetAll(QSettings& settings, const std::map<std::string, std::string>& values, const QString& file) {
  if (ReadWhole(settings) == QSettings::FormatError) throw base::Failure(Problem(file, settings.status()));
  for (const auto& [path, value] : values) {
    settings.setValue(QString::fromStdString(path), QString::fromStdString(value));
  }
  settings.sync();
  if (settings.status() != QSettings::NoError) throw base::Failure(Problem(file, settings.status()));
}

// The lock that QSettings itself takes. One that was left behind by a program that was killed is taken over:
// at once when that is certain, else when it is half a minute old.
void Take(QLockFile& lock, const QString& file, std::chrono::milliseconds& wait) {
  if (lock.tryLock(static_cast<int>(wait.count()))) return;
  if (lock.error() != QLockFile::LockFailedError) throw base::Failure(Problem(file, QSettings::AccessError));
  wait = std::chrono::milliseconds::zero();
  const std::string name = file.toStdString();
  throw base::Failure("Settings file " + name + " is locked (" + name +
                      ".lock): another program is writing it, or was ended while it did. What was changed "
                      "holds for this run and is saved with the next change");
}

}  // namespace

QSettingsStore::QSettingsStore(const QString& user_file, const QString& machine_file, Report report,
                               std::chrono::milliseconds lock_wait)
    : report_(std::move(report)),
      user_(OpenIni(user_file.isEmpty() ? UserSettingsFile() : user_file)),
      machine_(OpenIni(machine_file.isEmpty() ? MachineSettingsFile() : machine_file)),
      user_file_(user_->fileName()),
      lock_wait_(lock_wait) {
  if (ReadWhole(*machine_) != QSettings::NoError) report_(RecordProblem(*machine_));
  if (ReadWhole(*user_) != QSettings::NoError) ReportUser(Problem(user_file_, user_->status()));
}

QSettingsStore::~QSettingsStore() = default;

bool QSettingsStore::IsReadable() const { return user_->status() == QSettings::NoError; }

std::optional<std::string> QSettingsStore::Read(const std::string& path) const {
  const auto unsaved = unsaved_.find(path);
  return unsaved == unsaved_.end() ? Value(*user_, path) : unsaved->second;
}

std::optional<std::string> QSettingsStore::ReadMachineWide(const std::string& path) const {
  return Value(*machine_, path);
}

void QSettingsStore::Write(const std::string& path, const std::string& value) {
  unsaved_[path] = value;
  try {
    user_ = ReplaceFile();
    unsaved_.clear();
  } catch (const base::Failure& failure) {
    ReportUser(failure.Description());
    throw;
  }
}

// QSettings waits for a file's lock without limit: it is given a copy, whose lock nobody else takes.
std::unique_ptr<QSettings> QSettingsStore::ReplaceFile() {
  const auto refuse = [this] { throw base::Failure(Problem(user_file_, QSettings::AccessError)); };
  const QFileInfo file(user_file_);
  if (!QDir().mkpath(file.absolutePath()) || (file.exists() && !file.isFile())) refuse();
  QLockFile lock(file.absoluteFilePath() + ".lock");
  Take(lock, user_file_, lock_wait_);
  const QTemporaryDir folder;
  const QString copy = folder.filePath("settings.ini");
  if (!folder.isValid() || (file.exists() && !QFile::copy(user_file_, copy))) refuse();
  SetAll(*OpenIni(copy), unsaved_, user_file_);
  QFile edited(copy);
  QSaveFile target(user_file_);
  if (!edited.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly) ||
      target.write(edited.readAll()) != edited.size() || !target.commit()) {
    refuse();
  }
  // Not the one that wrote: an event makes that read its file once more, which has gone by then.
  auto written = OpenIni(copy);
  static_cast<void>(ReadWhole(*written));
  return written;
}

void QSettingsStore::ReportUser(const std::string& problem) {
  if (!std::exchange(user_reported_, true)) report_(problem);
}

}  // namespace korval::platform
