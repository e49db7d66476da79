// SPDX-License-Identifier: MIT
#include "PartOfProgram.h"

#include <cstring>

#include <QFileInfo>
#include <QLibrary>

#include "base/Failure.h"

namespace korval::apps {
namespace {

QString LibraryFile(const std::string& name, const std::string& program_folder) {
  const QString file = QString::fromStdString(name + KORVAL_PART_SUFFIX);
  const QString folder = QString::fromStdString(program_folder);
  const QString beside = folder + "/" + file;
  return QFileInfo::exists(beside) ? beside : folder + "/" KORVAL_PARTS_FOLDER "/" + file;
}

}  // namespace

PartOfProgram::PartOfProgram(const std::string& name, const std::string& program_folder)
    : file_(LibraryFile(name, program_folder).toStdString()) {
  QLibrary library(QString::fromStdString(file_));
  if (!library.load()) throw base::Failure(library.errorString().toStdString());
  using Version = const char*();
  if (std::strcmp(Find<Version>("KorvalPartVersion")(), KORVAL_VERSION) != 0)
    throw base::Failure(file_ + " belongs to another version of the program");
}

QFunctionPointer PartOfProgram::Resolve(const char* function) const {
  const QFunctionPointer found = QLibrary::resolve(QString::fromStdString(file_), function);
  if (found == nullptr) throw base::Failure(file_ + " has no function " + function);
  return found;
}

}  // namespace korval::apps
