// SPDX-License-Identifier: MIT
#include "window/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>

#include "window/SharedFolder.h"

namespace korval::apps {
namespace {

void Install(QTranslator& translator, const char* file, const QString& folder) {
  if (translator.load(QLocale(), QString::fromLatin1(file), "_", folder)) {
    QCoreApplication::installTranslator(&translator);
  }
}

}  // namespace

Translations::Translations() {
  Install(qt_, "qtbase", QLibraryInfo::path(QLibraryInfo::TranslationsPath));
  Install(own_, "korval-asap-server", SharedFolder(QCoreApplication::applicationDirPath(), "translations"));
}

}  // namespace korval::apps
